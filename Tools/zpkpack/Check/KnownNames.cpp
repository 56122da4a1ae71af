// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/KnownNames.h"

#include <algorithm>
#include <string>

#include "Base/ZPKNearestName.h"
#include "Description/CElementReader.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

bool isAmong(const KnownNames::Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Empty where nobody will read it, as in a file of many unknown names.
std::string advice(const FindingList& findings, const char* check, const KnownNames::Names& names,
                   const std::string& name) {
    const std::string_view near =
        findings.keepsAnother(check) ? ZPKNearestName::among(names, name) : std::string_view();
    return near.empty() ? "" : "; \"" + std::string(near) + "\" is known";
}

/// Of another vocabulary, like `xml:lang`.
bool hasPrefix(const std::string& name) {
    return name.find(':') != std::string::npos;
}

}  // namespace

void KnownNames::check(DescriptionText& text, const CXMLElement& element, FindingList& findings,
                       const ElementVisitor& visit) const {
    checkAttributes(text, element, findings);
    CElementReader::ForEachChildElement(element, [&](const CXMLElement* child) {
        const std::string& name = child->GetNameString();
        if (!isAmong(m_children, name)) {
            findings.add("unknown-element", text.path(),
                         "the launcher knows no element \"" + name + "\" in \"" + element.GetNameString() +
                             "\"" + advice(findings, "unknown-element", m_children, name),
                         text.placeOf(*child));
        } else if (visit) {
            visit(*child);
        }
    });
}

void KnownNames::checkAttributes(DescriptionText& text, const CXMLElement& element,
                                 FindingList& findings) const {
    for (const CXMLNode* attribute : element.GetAttributes()) {
        const std::string& name = attribute->GetNameString();
        if (!isAmong(m_attributes, name) && !hasPrefix(name)) {
            findings.add("unknown-attribute", text.path(),
                         "the launcher knows no attribute \"" + name + "\" of \"" + element.GetNameString() +
                             "\"" + advice(findings, "unknown-attribute", m_attributes, name),
                         text.placeOfNext(element, name));
        }
    }
}

}  // namespace zpk_packager
