// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/StartupCheck.h"

#include <memory>
#include <optional>

#include "Base/ZPKPath.h"
#include "Description/CElementReader.h"
#include "Description/ZPKSetupProgramFinder.h"
#include "Description/ZPKXMLDefine.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/KnownNames.h"
#include "Tools/zpkpack/Check/ProgramCheck.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

/// How an item of the payload is named, where only the token before it is missing.
std::string adviceFor(const std::string& exec, const std::string& dataFolder) {
    return !exec.empty() && exec.front() != '/' && exec.find("..") == std::string::npos &&
                   ZPKFileManager::fileExists(ZPKPath::join(dataFolder, exec))
               ? "; \"" + ZPKPath::join(ZPKPackageLayout::kDataFolderToken, exec) + "\" is"
               : "";
}

}  // namespace

void StartupCheck::run(const std::string& folder) {
    const std::string dataFolder = ZPKPackageLayout::folder(folder, ZPKPackageLayout::Content::Data);
    Mention mention{ZPKPackageLayout::startupDescription(folder), {}, {}};
    const std::unique_ptr<DescriptionText> text = DescriptionText::read(mention.path, m_findings);
    if (text) {
        KnownNames({ATTR_EXEC, ATTR_PARAM}, {}).check(*text, text->root(), m_findings);
        CElementReader::ReadAttribute(text->root(), ATTR_EXEC, mention.exec);
        mention.place = text->placeOf(text->root(), ATTR_EXEC);
        checkParameter(*text);
    }
    if (!ZPKFileManager::isFolder(dataFolder)) {
        return;
    }
    if (mention.exec.empty()) {
        checkFirst(mention, dataFolder);
    } else {
        checkNamed(mention, dataFolder);
    }
}

void StartupCheck::checkParameter(DescriptionText& text) {
    std::string parameter;
    CElementReader::ReadAttribute(text.root(), ATTR_PARAM, parameter);
    if (parameter.find_first_of(" \t\n") != std::string::npos) {
        m_findings.add("param-words", text.path(),
                       "the program gets \"" + parameter + "\" as one argument, blanks included",
                       text.placeOf(text.root(), ATTR_PARAM));
    }
}

void StartupCheck::checkNamed(const Mention& mention, const std::string& dataFolder) {
    const std::optional<std::string> program = ZPKSetupProgramFinder::programOfExec(mention.exec, dataFolder);
    if (!program) {
        const std::optional<std::string> other = ZPKSetupProgramFinder::firstExecutable(dataFolder);
        m_findings.add("exec-bundle", mention.path,
                       "\"" + mention.exec + "\" is no bundle with a main program; the launcher runs " +
                           (other ? "\"" + ZPKPath::lastComponent(*other) + "\" instead" : "nothing"),
                       mention.place);
        return;
    }
    const bool climbs = mention.exec.find("..") != std::string::npos;
    if (climbs || !ZPKPath::isSameOrInside(*program, dataFolder)) {
        m_findings.add("exec-outside", mention.path,
                       "\"" + mention.exec + "\" is not in Data, so it is not in the package" +
                           adviceFor(mention.exec, dataFolder),
                       mention.place);
        return;
    }
    checkInData(mention, *program, dataFolder);
}

void StartupCheck::checkInData(const Mention& mention, const std::string& program,
                               const std::string& dataFolder) {
    if (!ZPKFileManager::fileExists(program)) {
        m_findings.add("exec-missing", mention.path, "\"" + mention.exec + "\" is not there", mention.place);
    } else if (!ZPKFileManager::isExecutableRegularFile(program)) {
        m_findings.add("exec-not-executable", mention.path,
                       "\"" + mention.exec + "\" is no file that may be executed", mention.place);
    } else {
        ProgramCheck(m_findings).run(program, dataFolder);
    }
}

void StartupCheck::checkFirst(const Mention& mention, const std::string& dataFolder) {
    if (const std::optional<std::string> first = ZPKSetupProgramFinder::firstExecutable(dataFolder)) {
        ProgramCheck(m_findings).run(*first, dataFolder);
        return;
    }
    m_findings.add("no-program", mention.path,
                   "no program is named, and none that may be executed is at the top of Data", mention.place);
}

}  // namespace zpk_packager
