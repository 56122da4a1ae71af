// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageBuilder.h"

#include <optional>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "RunFile/ZPKRunFile.h"
#include "RunFile/ZPKRunFileWriter.h"
#include "Tools/zpkpack/ArchivePacker.h"
#include "Tools/zpkpack/ChildStep.h"
#include "Tools/zpkpack/InfoPlist.h"
#include "Tools/zpkpack/Manifest.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SignalHold.h"
#include "Tools/zpkpack/Starter.h"
#include "Tools/zpkpack/TreeSize.h"
#include "Tools/zpkpack/WorkFolder.h"

namespace zpk_packager {

namespace {

/// What a launcher will find in the bundle.
void checkBundle(const std::string& path, const PackageDescription& description) {
    const std::optional<ZPKBundle> bundle = ZPKBundle::bundleWithPath(path);
    if (!bundle || !bundle->executablePath() || bundle->bundleIdentifier() != description.bundleIdentifier) {
        throw PackagerFailure(path, "its description cannot be read back");
    }
}

}  // namespace

PackageBuilder::PackageBuilder(const BuildOptions& options, Progress* progress)
    : m_source(options.sourceFolder),
      m_template(options.templatePath),
      m_windows(options.templatePath, options.frameworksPath, options.withWindows),
      m_output(options.outputPath, options.replace),
      m_icon(options.sourceFolder, options.drawProgramPath),
      m_runProgram(options.runProgramPath),
      m_time(options.time),
      m_progress(progress) {}

PackageSummary PackageBuilder::build() const {
    const PackageDescription description = check();
    const SignalHold signals;
    // A signal that waits ends the process when it is let in: by then the bar is gone.
    const Progress::Scope shown(m_progress);
    const WorkFolder workFolder = WorkFolder::beside(m_output.path());
    const std::string bundle = ZPKPath::join(workFolder.path(), m_output.bundleName());
    ChildStep::run(signals, [&] { make(description, workFolder.path(), bundle); });
    PackageSummary summary = PackageSummary::ofBundle(bundle);
    if (!m_output.isRunFile()) {
        m_output.put(bundle);
        return summary;
    }
    const std::string runFile = ZPKPath::join(workFolder.path(), "run-file");
    ChildStep::run(signals, [&] { makeRunFile(bundle, runFile); });
    summary.runFileSize = PackageSummary::sizeOfFile(runFile);
    m_output.put(runFile);
    return summary;
}

PackageDescription PackageBuilder::check() const {
    m_source.check();
    m_output.check(m_source.folder(), copiedFolders());
    m_template.check();
    m_windows.check();
    if (m_windows.isWanted()) {
        m_icon.check();
    }
    return PackageDescription::read(m_source.folder());
}

std::vector<std::string> PackageBuilder::copiedFolders() const {
    std::vector<std::string> folders{m_template.path()};
    if (m_windows.frameworks()) {
        folders.push_back(*m_windows.frameworks());
    }
    return folders;
}

void PackageBuilder::make(const PackageDescription& description, const std::string& workFolder,
                          const std::string& bundle) const {
    const std::string resourceFolder = ZPKPath::join(bundle, "Contents/Resources");
    m_template.copyTo(bundle, m_windows.leftOut());
    m_windows.putInto(bundle);
    InfoPlist::write(description, ZPKPath::join(bundle, "Contents/Info.plist"));
    copyLanguages(resourceFolder);
    if (m_windows.isWanted()) {
        m_icon.putInto(resourceFolder);
    }
    Starter::write(description, bundle);
    const ArchivePacker packer(workFolder, m_time, m_progress);
    packer.pack(ZPKPackageLayout::Content::Info, m_source.folder(), resourceFolder);
    packer.pack(ZPKPackageLayout::Content::Data, m_source.folder(), resourceFolder);
    Manifest::write(bundle, m_progress);
    checkBundle(bundle, description);
}

void PackageBuilder::makeRunFile(const std::string& bundle, const std::string& path) const {
    const std::optional<ZPKBundle> made = ZPKBundle::bundleWithPath(bundle);
    const std::string launcher = made.value().executablePath().value().substr(bundle.size() + 1);
    ZPKRunFileWriter writer(m_runProgram, bundle, launcher);
    if (m_progress != nullptr && m_progress->isShown()) {
        m_progress->begin("compressing", TreeSize::of(bundle));
        writer.setCounter(m_progress->counter());
    }
    require(writer.write(path));
    const ZPKResult<ZPKRunFile> readBack = ZPKRunFile::open(path);
    if (!readBack) {
        throw PackagerFailure(readBack.failure());
    }
}

void PackageBuilder::copyLanguages(const std::string& resourceFolder) const {
    if (!m_source.hasLanguages()) {
        return;
    }
    const std::string copy = ZPKPackageLayout::languageFolder(resourceFolder);
    ZPKFileManager::removeItem(copy).ignore();
    // Of a link, what it leads to is meant.
    require(ZPKFileManager::copyItem(ZPKPath::resolved(m_source.languageFolder()), copy));
}

}  // namespace zpk_packager
