// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/ZPKSetupProgramFinder.h"

#include <memory>

#include "Base/ZPKPath.h"
#include "Description/CStartupType.h"
#include "Description/CZPKXMLLoader.h"
#include "Package/ZPKPackageLayout.h"
#include "Package/ZPKStagedItem.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"

using varno_zpk::CStartupType;
using varno_zpk::CZPKXMLLoader;

namespace {

std::string replaceAll(std::string text, const std::string& token, const std::string& value) {
    for (std::size_t at = text.find(token); at != std::string::npos;
         at = text.find(token, at + value.size())) {
        text.replace(at, token.size(), value);
    }
    return text;
}

std::optional<std::string> mainProgramOfBundle(const std::string& path) {
    const std::optional<ZPKBundle> bundle = ZPKBundle::bundleWithPath(path);
    return bundle ? bundle->executablePath() : std::nullopt;
}

std::unique_ptr<const CStartupType> startupOf(const std::string& stagingFolder) {
    const ZPKStagedItem item(ZPKPackageLayout::startupDescription(stagingFolder), stagingFolder);
    if (item.standing() != ZPKStagedItem::Standing::Inside) {
        return nullptr;
    }
    return std::unique_ptr<const CStartupType>(CZPKXMLLoader::LoadStartupXML(item.target()));
}

}  // namespace

std::optional<std::string> ZPKSetupProgramFinder::programOfExec(const std::string& exec,
                                                                const std::string& dataFolder) {
    std::string program = replaceAll(exec, ZPKPackageLayout::kDataFolderToken, dataFolder);
    if (ZPKPath::extension(program) == "app") {
        return mainProgramOfBundle(program);
    }
    return program;
}

std::optional<std::string> ZPKSetupProgramFinder::firstExecutable(const std::string& dataFolder) {
    std::vector<std::string> names;
    ZPKFileManager::contentsOfFolder(dataFolder, names).ignore();
    for (const std::string& name : names) {
        if (name.front() == '.') {
            continue;
        }
        const std::string path = ZPKPath::join(dataFolder, name);
        if (ZPKBundle::bundleWithPath(path)) {
            if (std::optional<std::string> program = mainProgramOfBundle(path)) {
                return program;
            }
        } else if (ZPKFileManager::isExecutableRegularFile(path)) {
            return path;
        }
    }
    return std::nullopt;
}

ZPKSetupProgram ZPKSetupProgramFinder::find(const std::string& stagingFolder) {
    const std::string dataFolder = ZPKPackageLayout::folder(stagingFolder, ZPKPackageLayout::Content::Data);
    ZPKSetupProgram program;
    const std::unique_ptr<const CStartupType> startup = startupOf(stagingFolder);
    if (startup && !startup->exec.empty()) {
        // A program that is named always gets its one argument, even an empty one, and even where
        // another is found in its place.
        program.parameters = {startup->param};
        program.path = programOfExec(startup->exec, dataFolder);
    }
    if (!program.path) {
        program.path = firstExecutable(dataFolder);
    }
    return program;
}
