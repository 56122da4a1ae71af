// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CNonCopyableObject.h"

namespace varno_zpk {

/// One entry of a string table: a key and its text, UTF-8 as in the file, escapes resolved.
class CResourceBundleStringElement final : public CNonCopyableObject {
public:
    /// Copies both zero-terminated texts.
    CResourceBundleStringElement(const char* inKey, const char* inValue);

    const std::string& GetKey() const { return m_key; }
    const std::string& GetValue() const { return m_value; }

private:
    std::string m_key;
    std::string m_value;
};

}  // namespace varno_zpk
