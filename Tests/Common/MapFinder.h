// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Common/CVariableValueFinder.h"

namespace zpk_test {

/// Finds the values of a map and remembers what it was asked.
class MapFinder : public varno_zpk::CVariableValueFinder {
public:
    MapFinder(std::initializer_list<std::pair<const std::string, std::string>> values) : m_values(values) {}

    const char* FindValue(const std::string& name, std::string& value) override {
        asked.push_back(name);
        const auto found = m_values.find(name);
        if (found == m_values.end()) {
            return nullptr;
        }
        value = found->second;
        return value.c_str();
    }

    std::vector<std::string> asked;

private:
    std::map<std::string, std::string> m_values;
};

}  // namespace zpk_test
