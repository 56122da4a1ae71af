// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ArchiveCheck.h"

#include <set>
#include <stdexcept>
#include <vector>

#include "Archive/Archive.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"

namespace zpk_packager {

namespace {

/// Keeps the first error: the rest usually follows from it.
class FirstError : public zpk_archive::ErrorSink {
public:
    void error(const std::string& name, const std::string& reason) override {
        if (m_text.empty()) {
            m_text = name + ": " + reason;
        }
    }
    void warning(const std::string&, const std::string&) override {}
    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

}  // namespace

void checkArchive(const std::string& archivePath, const std::string& sourceFolder, const std::string& name) {
    std::set<std::string> members;
    FirstError sink;
    const bool whole = zpk_archive::list(
        archivePath,
        [&members](const zpk_archive::MemberDescription& member) { members.insert(member.name); }, sink);
    if (!whole) {
        throw std::runtime_error("the archive of " + sourceFolder + " cannot be read back: " + sink.text());
    }
    std::vector<std::string> paths;
    ZPKFileManager::subpathsOfFolder(sourceFolder, paths);
    for (const std::string& path : paths) {
        const std::string member = ZPKPath::join(name, path);
        if (members.count(member) == 0) {
            throw std::runtime_error("the archive of " + sourceFolder + " lacks " + path);
        }
    }
}

}  // namespace zpk_packager
