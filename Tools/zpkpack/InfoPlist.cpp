// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/InfoPlist.h"

#include <cerrno>
#include <memory>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKReplacementFile.h"
#include "Common/CXMLAttribute.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLNode.h"
#include "Platform/ZPKBundle.h"
#include "Tools/zpkpack/PackagerFailure.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

void addKeyAndString(CXMLElement& dictionary, const char* key, const std::string& value) {
    dictionary.AddChild(CXMLNode::CreateElementWithNameWithStringValue("key", key));
    dictionary.AddChild(CXMLNode::CreateElementWithNameWithStringValue("string", value.c_str()));
}

std::string contents(const PackageDescription& description) {
    std::unique_ptr<CXMLElement> dictionary(CXMLNode::CreateElementWithName("dict"));
    addKeyAndString(*dictionary, "CFBundleName", description.bundleName);
    addKeyAndString(*dictionary, "CFBundleIdentifier", description.bundleIdentifier);
    addKeyAndString(*dictionary, "CFBundleExecutable", "Zephyrkit");
    if (!description.displayName.empty()) {
        addKeyAndString(*dictionary, ZPKBundle::kDisplayNameKey, description.displayName);
    }

    std::unique_ptr<CXMLElement> list(CXMLNode::CreateElementWithName("plist"));
    list->AddAttribute(CXMLNode::CreateAttributeWithNameWithStringValue("version", "1.0"));
    list->AddChild(dictionary.release());
    const std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithRootElement(list.release()));
    std::string text;
    document->WriteXMLContents(text);
    return text;
}

}  // namespace

void InfoPlist::write(const PackageDescription& description, const std::string& path) {
    ZPKResult<ZPKReplacementFile> file = ZPKReplacementFile::forPath(path);
    if (!file) {
        throw PackagerFailure(file.failure());
    }
    if (!ZPKDescriptorIO::writeWhole(file->descriptor(), contents(description))) {
        throw PackagerFailure::ofSystem(path, errno);
    }
    require(file->takeOverPermissions());
    require(file->commit());
}

}  // namespace zpk_packager
