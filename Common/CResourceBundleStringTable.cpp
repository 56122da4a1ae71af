// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundleStringTable.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "Base/ZPKTraceText.h"
#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundleStringElement.h"
#include "Common/CResourceBundleStringTableParser.h"

namespace varno_zpk {

namespace {

const CResourceBundleStringElement& elementOf(const CBaseObject* inObject) {
    return *DOWN_CAST(const CResourceBundleStringElement*, inObject);
}

}  // namespace

CResourceBundleStringTable::CResourceBundleStringTable(const std::string& inPath, const char* inName)
    : m_path(inPath), m_name(inName) {
    try {
        CResourceBundleStringTableParser parser;
        // A table that cannot be read stays empty, or keeps what was read of it.
        static_cast<void>(parser.Parse(m_path.c_str(), m_elements));
        if (!m_elements.empty()) {
            std::sort(m_elements.begin(), m_elements.end(), CCompareElementToKey());
        }
    } catch (...) {
        CBaseObjectUtil::Destroy(m_elements);
        throw;
    }
}

CResourceBundleStringTable::~CResourceBundleStringTable() {
    CBaseObjectUtil::Destroy(m_elements);
}

const char* CResourceBundleStringTable::GetStringForKey(const char* inKey) const {
    const auto found = std::lower_bound(m_elements.begin(), m_elements.end(), inKey, CCompareElementToKey());
    if (found == m_elements.end() || CompareElementToKey(*found, inKey) != 0) {
        return nullptr;
    }
    const CResourceBundleStringElement& element = elementOf(*found);
    TraceHit(element);
    return element.GetValue().c_str();
}

void CResourceBundleStringTable::TraceHit(const CResourceBundleStringElement& inElement) const {
    // Put together here and written at once: formatting would take longer than the whole search.
    const ZPKTraceText key(inElement.GetKey());
    const ZPKTraceText value(inElement.GetValue());
    const std::string_view parts[] = {"CResourceBundleStringTable::GetStringForKey: ",
                                      m_path,
                                      ": ",
                                      m_name,
                                      ": '",
                                      key.shown(),
                                      key.mark(),
                                      "'='",
                                      value.shown(),
                                      value.mark(),
                                      "'\n"};
    std::size_t size = 0;
    for (const std::string_view part : parts) {
        size += part.size();
    }
    std::string line;
    line.reserve(size);
    for (const std::string_view part : parts) {
        line.append(part);
    }
    std::fwrite(line.data(), 1, line.size(), stderr);
}

int CResourceBundleStringTable::CompareElements(const CBaseObject* inElement1,
                                                const CBaseObject* inElement2) {
    return elementOf(inElement1).GetKey().compare(elementOf(inElement2).GetKey());
}

int CResourceBundleStringTable::CompareElementToKey(const CBaseObject* inElement, const char* inKey) {
    return elementOf(inElement).GetKey().compare(inKey);
}

}  // namespace varno_zpk
