// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageBuilder.h"

#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>

#include "Base/ZPKPath.h"
#include "Common/CXMLAttribute.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLNode.h"
#include "Description/CStartupType.h"
#include "Description/CUpdateInfoType.h"
#include "Description/CZPKXMLLoader.h"
#include "Package/CDirectoryHolder.h"
#include "Package/CZPKUtil.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "Tools/zpkpack/ArchiveCheck.h"
#include "Tools/zpkpack/PackageDescription.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

void requireFolder(const std::string& path, const std::string& purpose) {
    if (!CZPKUtil::IsFolderExist(path)) {
        throw std::runtime_error("there is no folder " + path + ": " + purpose);
    }
}

/// Refuses descriptions that the launcher would pass over in silence on the user's machine.
void checkDescriptions(const std::string& sourceFolder) {
    const std::string startup = ZPKPath::join(sourceFolder, "Info/Startup.xml");
    if (CZPKUtil::IsFileExist(startup) &&
        !std::unique_ptr<CStartupType>(CZPKXMLLoader::LoadStartupXML(startup))) {
        throw std::runtime_error(startup + " cannot be loaded: it is not well-formed XML");
    }
    const std::string condition = ZPKPath::join(sourceFolder, "Info/Condition.xml");
    if (CZPKUtil::IsFileExist(condition) &&
        !std::unique_ptr<CUpdateInfoType>(CZPKXMLLoader::LoadConditionXML(condition))) {
        throw std::runtime_error(condition + " cannot be loaded: it is not well-formed XML");
    }
    const std::string languages = ZPKPath::join(sourceFolder, "UILang/Languages.xml");
    if (CZPKUtil::IsFolderExist(ZPKPath::join(sourceFolder, "UILang")) &&
        !CZPKXMLLoader::LoadLanguagesXML(languages)) {
        throw std::runtime_error(languages +
                                 " cannot be loaded: it needs a root with FallBackCode and one "
                                 "Language element with a Code for each language");
    }
}

void addKeyAndString(CXMLElement& dictionary, const char* key, const std::string& value) {
    dictionary.AddChild(CXMLNode::CreateElementWithNameWithStringValue("key", key));
    dictionary.AddChild(CXMLNode::CreateElementWithNameWithStringValue("string", value.c_str()));
}

void writeInfoPlist(const PackageDescription& description, const std::string& path) {
    std::unique_ptr<CXMLElement> dictionary(CXMLNode::CreateElementWithName("dict"));
    addKeyAndString(*dictionary, "CFBundleName", description.bundleName);
    addKeyAndString(*dictionary, "CFBundleIdentifier", description.bundleIdentifier);
    addKeyAndString(*dictionary, "CFBundleExecutable", "Zephyrkit");

    std::unique_ptr<CXMLElement> list(CXMLNode::CreateElementWithName("plist"));
    list->AddAttribute(CXMLNode::CreateAttributeWithNameWithStringValue("version", "1.0"));
    list->AddChild(dictionary.release());
    const std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithRootElement(list.release()));
    document->WriteToFile(path.c_str());
}

/// Archives and scrambles the folder `name` of the source into the bundle's `name`.datx, and reads
/// the result back the way a launcher will.
void packFolder(const std::string& name, const BuildOptions& options, const std::string& resourceFolder,
                const std::string& workFolder) {
    const std::string source = ZPKPath::join(options.sourceFolder, name);
    const std::string plain = ZPKPath::join(workFolder, name + ".dat");
    const std::string scrambled = ZPKPath::join(resourceFolder, name + ".datx");
    const std::string readBack = ZPKPath::join(workFolder, name + ".check");
    CZPKUtil::Compress(source, plain);
    if (!CZPKUtil::IsFileExist(plain)) {
        throw std::runtime_error(source + " could not be archived; see the messages above");
    }
    CZPKUtil::Fake(plain, scrambled);
    CZPKUtil::Unfake(scrambled, readBack);
    checkArchive(readBack, source, name);
}

std::string makeWorkFolder(const std::string& outputPath) {
    std::string path = outputPath + ".XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder beside " + outputPath + ": " + std::strerror(errno));
    }
    return path;
}

void moveIntoPlace(const std::string& made, const BuildOptions& options) {
    if (options.replace) {
        CZPKUtil::DeleteFolder(options.outputPath);
    }
    if (std::rename(made.c_str(), options.outputPath.c_str()) != 0) {
        throw std::runtime_error("cannot put the bundle at " + options.outputPath + ": " +
                                 std::strerror(errno));
    }
}

bool isItemOrInside(const std::string& inner, const std::string& outer) {
    const std::filesystem::path innerPath = std::filesystem::weakly_canonical(inner);
    const std::filesystem::path outerPath = std::filesystem::weakly_canonical(outer);
    const auto parts = std::mismatch(outerPath.begin(), outerPath.end(), innerPath.begin(), innerPath.end());
    return parts.first == outerPath.end();
}

/// Replacing the output must not delete what the package is made of, and a folder that is packed must
/// not grow by the package that is made of it.
void checkPlaces(const BuildOptions& options) {
    for (const std::string& input : {options.sourceFolder, options.templatePath}) {
        if (isItemOrInside(input, options.outputPath)) {
            throw std::runtime_error(options.outputPath + " is or holds " + input +
                                     ", of which the bundle is made");
        }
    }
    for (const char* const name : {"Info", "Data", "UILang"}) {
        const std::string packed = ZPKPath::join(options.sourceFolder, name);
        if (isItemOrInside(options.outputPath, packed)) {
            throw std::runtime_error(options.outputPath + " lies in " + packed + ", which is packed");
        }
    }
}

void checkOptions(const BuildOptions& options) {
    requireFolder(options.sourceFolder, "the package source");
    requireFolder(ZPKPath::join(options.sourceFolder, "Info"), "it holds Startup.xml");
    requireFolder(ZPKPath::join(options.sourceFolder, "Data"), "it holds the setup program and its files");
    if (ZPKPath::extension(options.outputPath) != "app") {
        throw std::runtime_error(options.outputPath + ": the name of a bundle ends in .app");
    }
    if (!options.replace && CZPKUtil::IsFileExist(options.outputPath)) {
        throw std::runtime_error(options.outputPath + " exists; --force replaces it");
    }
    checkPlaces(options);
}

}  // namespace

void buildPackage(const BuildOptions& given) {
    BuildOptions options = given;
    // A trailing separator would put the work folder inside the output instead of beside it.
    while (options.outputPath.size() > 1 && options.outputPath.back() == '/') {
        options.outputPath.pop_back();
    }
    checkOptions(options);
    const PackageDescription description = PackageDescription::read(options.sourceFolder);
    checkDescriptions(options.sourceFolder);

    const std::optional<ZPKBundle> bundleTemplate = ZPKBundle::bundleWithPath(options.templatePath);
    if (!bundleTemplate || !bundleTemplate->executablePath()) {
        throw std::runtime_error(options.templatePath + " is no launcher bundle");
    }
    ZPKMainBundle::setMainBundle(*bundleTemplate);

    const std::string workFolder = makeWorkFolder(options.outputPath);
    const CDirectoryHolder workHolder("", workFolder);
    const std::string bundle = ZPKPath::join(workFolder, "bundle.app");
    const std::string resourceFolder = ZPKPath::join(bundle, "Contents/Resources");
    if (!CZPKUtil::Copy(options.templatePath, bundle)) {
        throw std::runtime_error("cannot copy " + options.templatePath + " to " + bundle);
    }
    writeInfoPlist(description, ZPKPath::join(bundle, "Contents/Info.plist"));
    const std::string languages = ZPKPath::join(options.sourceFolder, "UILang");
    if (CZPKUtil::IsFolderExist(languages) &&
        !CZPKUtil::Copy(languages, ZPKPath::join(resourceFolder, "UILang"))) {
        throw std::runtime_error("cannot copy " + languages);
    }
    packFolder("Info", options, resourceFolder, workFolder);
    packFolder("Data", options, resourceFolder, workFolder);
    moveIntoPlace(bundle, options);
}

}  // namespace zpk_packager
