// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CVariableManager.h"

#include <cassert>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Base/ZPKTraceText.h"
#include "Common/CVariableValueFinder.h"

namespace varno_zpk {

namespace {

constexpr char kDelimiter = '$';

void traceLookup(const std::string& name, const char* value) {
    std::fprintf(stderr, "Variable %s='%s'.\n", ZPKTraceText(name).text().c_str(),
                 ZPKTraceText(value).text().c_str());
}

}  // namespace

CVariableManager* CVariableManager::s_Manager = nullptr;

// The reports of these assertions are fixed texts, which the formatter would change.
// clang-format off
CVariableManager::CVariableManager() {
    assert(s_Manager==NULL); // NOLINT(modernize-use-nullptr)
}

CVariableManager::~CVariableManager() {
    assert(s_Manager==this);
    s_Manager = nullptr;
}
// clang-format on

CVariableManager* CVariableManager::GetManager() {
    if (s_Manager == nullptr) {
        s_Manager = new CVariableManager;
    }
    return s_Manager;
}

const char* CVariableManager::ExpandVariablesInString(const char* str, std::string& out,
                                                      IVariableValueFinder* finder) {
    const char* opening = std::strchr(str, kDelimiter);
    const char* closing = opening != nullptr ? std::strchr(opening + 1, kDelimiter) : nullptr;
    if (closing == nullptr) {
        return str;
    }

    // Built aside, since `str` may be an earlier result that still lies in `out`.
    std::string expanded;
    const char* cursor = str;
    while (closing != nullptr) {
        expanded.append(cursor, opening);
        const std::string reference(opening, closing + 1);
        cursor = closing + 1;
        std::string value;
        expanded.append(FindValueForVariable(reference, value, finder));
        opening = std::strchr(cursor, kDelimiter);
        closing = opening != nullptr ? std::strchr(opening + 1, kDelimiter) : nullptr;
    }
    expanded.append(cursor);
    out = std::move(expanded);
    return out.c_str();
}

const char* CVariableManager::Expand(const char* str, std::string& out) {
    const char* expanded = ExpandVariablesInString(str, out, CVariableValueFinder::GetDefaultFinder());
    if (expanded == str) {
        out.assign(str);
    }
    return out.c_str();
}

const char* CVariableManager::ExpandAndReturnTempString(const char* str) {
    return ExpandAndReturnTempString(str, CVariableValueFinder::GetDefaultFinder());
}

const char* CVariableManager::ExpandAndReturnTempString(const char* str, IVariableValueFinder* finder) {
    return ExpandVariablesInString(str, m_tempString, finder);
}

const char* CVariableManager::FindValueForVariable(const std::string& name, std::string& value,
                                                   IVariableValueFinder* finder) {
    if (finder == nullptr) {
        return name.c_str();
    }
    const char* found = finder->FindValue(name, value);
    traceLookup(name, found != nullptr ? found : "(null)");
    assert(found != nullptr);
    return found;
}

}  // namespace varno_zpk
