// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Common/CNonCopyableObject.h"

namespace varno_zpk {

class CResourceBundleStringElement;

/// The entries of one string table file, sorted by key. Read once, when it is made; a file that
/// cannot be read gives an empty table.
class CResourceBundleStringTable : public CNonCopyableObject {
public:
    /// `inName` is the name under which the table was asked for, `inPath` its file.
    CResourceBundleStringTable(const std::string& inPath, const char* inName);
    ~CResourceBundleStringTable() override;

    const std::string& GetPath() const { return m_path; }
    const std::string& GetName() const { return m_name; }

    /// The text of the key, valid as long as the table, or null. A hit is traced on standard error.
    const char* GetStringForKey(const char* inKey) const;

    /// Less than, equal to or greater than 0 as the first element's key sorts before, with or after
    /// the second's, or after the key: byte by byte, unsigned, a prefix first.
    static int CompareElements(const CBaseObject* inElement1, const CBaseObject* inElement2);
    static int CompareElementToKey(const CBaseObject* inElement, const char* inKey);

private:
    void TraceHit(const CResourceBundleStringElement& inElement) const;

    std::string m_path;
    std::string m_name;
    /// Owned `CResourceBundleStringElement`s.
    std::vector<CBaseObject*> m_elements;
};

/// The order of a table's elements, for sorting them and for finding a key among them.
class CCompareElementToKey {
public:
    bool operator()(const CBaseObject* inElement, const char* inKey) const {
        return CResourceBundleStringTable::CompareElementToKey(inElement, inKey) < 0;
    }
    bool operator()(const char* inKey, const CBaseObject* inElement) const {
        return CResourceBundleStringTable::CompareElementToKey(inElement, inKey) > 0;
    }
    bool operator()(const CBaseObject* inElement1, const CBaseObject* inElement2) const {
        return CResourceBundleStringTable::CompareElements(inElement1, inElement2) < 0;
    }
};

}  // namespace varno_zpk
