// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PreviewPictures.h"

#include <algorithm>
#include <cstring>

#include "Base/ZPKPath.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKTask.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/PreviewPage.h"
#include "Tools/zpkpack/PreviewStage.h"
#include "Tools/zpkpack/Progress.h"
#include "Tools/zpkpack/SourceWriter.h"
#include "Tools/zpkpack/TemplateProgram.h"

namespace zpk_packager {

namespace {

constexpr const char* kPage = "index.html";
constexpr unsigned int kFileMode = 0644;

std::string listOf(const std::vector<std::string>& codes) {
    std::string text;
    for (const std::string& code : codes) {
        text += (text.empty() ? "" : ", ") + code;
    }
    return text;
}

}  // namespace

void PreviewPictures::make(const std::string& workFolder, const std::string& made) const {
    const PreviewStage stage(m_options, workFolder);
    const std::vector<std::string> languages = chosenAmong(stage.languages());
    SourceWriter::makeFolder(made);
    if (m_progress != nullptr) {
        m_progress->begin("drawing", languages.size(), "languages");
    }
    for (const std::string& language : languages) {
        const std::string folder = ZPKPath::join(made, language);
        SourceWriter::makeFolder(folder);
        draw(stage.path(), language, folder);
        if (m_progress != nullptr) {
            m_progress->advance(1);
        }
    }
    const std::string name = ZPKBundle::bundleWithoutDescription(stage.path()).localizedName();
    SourceWriter::writeFile(ZPKPath::join(made, kPage),
                            PreviewPage::html(name, languages, filesIn(made), m_options.scale), kFileMode);
}

std::vector<std::string> PreviewPictures::chosenAmong(const std::vector<std::string>& offered) const {
    std::vector<std::string> chosen;
    for (const std::string& code : m_options.languages.empty() ? offered : m_options.languages) {
        if (std::find(offered.begin(), offered.end(), code) == offered.end()) {
            throw PackagerFailure("there is no language " + code + "; there are " + listOf(offered));
        }
        if (std::find(chosen.begin(), chosen.end(), code) == chosen.end()) {
            chosen.push_back(code);
        }
    }
    if (chosen.empty()) {
        throw PackagerFailure(m_options.package, "it offers no language");
    }
    return chosen;
}

void PreviewPictures::draw(const std::string& stage, const std::string& language,
                           const std::string& folder) const {
    ZPKTask task;
    TemplateProgram::run(
        task, m_options.programPath,
        {stage, language, folder, std::to_string(m_options.scale), m_options.isDark ? "dark" : "light"});
    if (task.terminationStatus() != 0) {
        throw PackagerFailure(
            "the windows in the language " + language + " cannot be drawn" +
            (task.terminationSignal() == 0 ? "" : std::string(": ") + ::strsignal(task.terminationSignal())));
    }
}

std::vector<std::string> PreviewPictures::filesIn(const std::string& folder) {
    std::vector<std::string> paths;
    require(ZPKFileManager::subpathsOfFolder(folder, paths));
    std::erase_if(paths, [&](const std::string& path) {
        return ZPKFileManager::isFolderNotFollowingLinks(ZPKPath::join(folder, path));
    });
    // By the numbers in them, too.
    std::sort(paths.begin(), paths.end(), [](const std::string& one, const std::string& other) {
        return ::strverscmp(one.c_str(), other.c_str()) < 0;
    });
    return paths;
}

}  // namespace zpk_packager
