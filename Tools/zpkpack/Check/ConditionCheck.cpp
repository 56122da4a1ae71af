// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/ConditionCheck.h"

#include <memory>

#include "Base/ZPKPath.h"
#include "Description/CElementReader.h"
#include "Description/ZPKXMLDefine.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/Check/KnownNames.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

bool isPattern(const std::string& path) {
    return path.find_first_of("*?") != std::string::npos;
}

/// Why the pattern can fit the path of no file; empty where it can. The path of a file has no empty part and
/// neither "." nor ".." in it; a star in the pattern may stand for a part or for many.
std::string reasonForNoMatch(const std::string& pattern) {
    const bool isContinued = pattern.front() == '*';
    const std::string path = isContinued ? pattern : ZPKPath::join("/", pattern);
    for (const char* const part : {"//", "/./", "/../"}) {
        if (path.find(part) != std::string::npos) {
            return std::string("no path of a file holds \"") + part + "\"";
        }
    }
    for (const char* const end : {"/", "/.", "/.."}) {
        if (path.ends_with(end)) {
            return std::string("no path of a file ends in \"") + end + "\"";
        }
    }
    if (path.find('\\') != std::string::npos) {
        return "folders are separated by \"/\", and a \"\\\" would have to be part of a name";
    }
    return "";
}

/// Nothing looks at Registry conditions, and no installed product has an empty signature.
bool canHold(const CXMLElement& condition) {
    const std::string& name = condition.GetNameString();
    std::string signature;
    CElementReader::ReadAttribute(condition, ATTR_SIGNATURE, signature);
    return name != TAG_REGISTRY && (name != TAG_UIMLOG || !signature.empty());
}

}  // namespace

void ConditionCheck::run(const std::string& folder) {
    const std::unique_ptr<DescriptionText> text =
        DescriptionText::read(ZPKPackageLayout::conditionDescription(folder), m_findings);
    if (text) {
        checkRoot(*text);
    }
}

void ConditionCheck::checkRoot(DescriptionText& text) {
    const Element* conditions = nullptr;
    const Element* targets = nullptr;
    const KnownNames names({ATTR_XMLVERSION}, {TAG_CONDITIONS, TAG_TARGETITEMS});
    names.check(text, text.root(), m_findings, [&](const Element& child) {
        const Element*& last = child.GetNameString() == TAG_CONDITIONS ? conditions : targets;
        checkDoubled(text, last, child);
        last = &child;
    });
    if (conditions != nullptr) {
        checkConditions(text, *conditions);
    } else {
        m_findings.add("condition-never", text.path(),
                       "it holds no \"Conditions\", so the package installs nowhere",
                       text.placeOf(text.root()));
    }
    if (targets != nullptr) {
        checkTargets(text, *targets);
    }
}

void ConditionCheck::checkDoubled(DescriptionText& text, const Element* before, const Element& element) {
    if (before != nullptr) {
        m_findings.add("doubled-element", text.path(),
                       "a second \"" + element.GetNameString() + "\"; the one in line " +
                           std::to_string(text.placeOf(*before).line) + " does not count",
                       text.placeOf(element));
    }
}

void ConditionCheck::checkConditions(DescriptionText& text, const Element& conditions) {
    bool canBeMet = false;
    bool hasRegistry = false;
    const KnownNames names({}, {TAG_REGISTRY, TAG_UIMLOG, TAG_UNINSTALLXML, TAG_DISC});
    names.check(text, conditions, m_findings, [&](const Element& child) {
        const std::string& name = child.GetNameString();
        canBeMet = canBeMet || canHold(child);
        hasRegistry = hasRegistry || name == TAG_REGISTRY;
        if (name == TAG_DISC) {
            checkDisc(text, child);
            return;
        }
        const std::string_view attribute = name == TAG_REGISTRY ? ATTR_KEYNAME
                                           : name == TAG_UIMLOG ? ATTR_SIGNATURE
                                                                : ATTR_APPNAME;
        KnownNames({attribute}, {}).check(text, child, m_findings);
    });
    if (!canBeMet) {
        m_findings.add("condition-never", text.path(),
                       std::string(hasRegistry ? "Registry conditions are never met, and no other here can be"
                                               : "it holds no condition that can be met") +
                           ", so the package installs nowhere",
                       text.placeOf(conditions));
    }
}

void ConditionCheck::checkDisc(DescriptionText& text, const Element& disc) {
    KnownNames({ATTR_FILEPATH}, {}).check(text, disc, m_findings);
    std::string pattern;
    CElementReader::ReadAttribute(disc, ATTR_FILEPATH, pattern);
    if (!isPattern(pattern)) {
        return;
    }
    const std::string reason = reasonForNoMatch(pattern);
    if (!reason.empty()) {
        m_findings.add("disc-pattern-never", text.path(),
                       "the pattern \"" + pattern + "\" fits nothing: " + reason,
                       text.placeOf(disc, ATTR_FILEPATH));
    } else if (pattern.front() == '*' && pattern.compare(0, 2, "*/") != 0) {
        m_findings.add("disc-pattern-root", text.path(),
                       "the pattern \"" + pattern +
                           "\" continues the path of the disc itself, so it fits files in every folder",
                       text.placeOf(disc, ATTR_FILEPATH));
    }
}

void ConditionCheck::checkTargets(DescriptionText& text, const Element& targets) {
    const KnownNames names({}, {TAG_ITEMINFO});
    names.check(text, targets, m_findings, [&](const Element& item) {
        KnownNames({ATTR_DISPLAYNAME}, {}).check(text, item, m_findings);
        std::string name;
        CElementReader::ReadAttribute(item, ATTR_DISPLAYNAME, name);
        if (name.find_first_not_of(" \t\n") == std::string::npos) {
            m_findings.add("display-name", text.path(), "this product has no name to show",
                           text.placeOf(item, ATTR_DISPLAYNAME));
        }
    });
}

}  // namespace zpk_packager
