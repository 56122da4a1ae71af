// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKCore.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iostream>
#include <memory>
#include <thread>
#include <utility>

#include "Base/ZPKPath.h"
#include "Common/CLocalizerUtil.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Description/CConditionsType.h"
#include "Description/CDiscType.h"
#include "Description/CStartupType.h"
#include "Description/CTargetItemsType.h"
#include "Description/CUIMLogType.h"
#include "Description/CUninstallXMLType.h"
#include "Description/CUpdateInfoType.h"
#include "Description/CZPKXMLLoader.h"
#include "InstallerCore/ZPKInterfaceLanguage.h"
#include "InstallerCore/ZPKLanguageInfos.h"
#include "InstallerCore/ZPKSoftwareListText.h"
#include "Package/CDirectoryHolder.h"
#include "Package/CZPKUtil.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKPropertyList.h"
#include "Platform/ZPKRunningApplications.h"
#include "Platform/ZPKStandardFolders.h"
#include "Platform/ZPKTask.h"
#include "UserInterface/ZPKCDSearchWindowController.h"
#include "UserInterface/ZPKProgressWindowController.h"

using namespace varno_zpk;
using Content = ZPKPackageLayout::Content;

namespace {

constexpr const char* kDataFilePathKey = "DataFilePath";
constexpr const char* kTemporaryFolderPathKey = "TemporaryFolderPath";
constexpr const char* kProgressControllerKey = "ProgressController";

std::string replaceAll(std::string text, const std::string& token, const std::string& value) {
    for (std::size_t at = text.find(token); at != std::string::npos;
         at = text.find(token, at + value.size())) {
        text.replace(at, token.size(), value);
    }
    return text;
}

/// The name that another run of this application carries.
std::string ownName() {
    const ZPKBundle& bundle = ZPKMainBundle::mainBundle();
    if (const auto strings = ZPKPropertyList::dictionaryWithContentsOfFile(
            ZPKPath::join(bundle.resourcePath(), "InfoPlist.strings"))) {
        if (const auto name = strings->stringForKey("CFBundleName")) {
            return *name;
        }
    }
    return ZPKPath::extension(bundle.bundleIdentifier());
}

std::optional<std::string> mainProgramOfBundle(const std::string& path) {
    const std::optional<ZPKBundle> bundle = ZPKBundle::bundleWithPath(path);
    return bundle ? bundle->executablePath() : std::nullopt;
}

/// The program that the startup description names: `exec` with the payload folder in place of
/// "$Data$", an application bundle standing for its main program.
std::optional<std::string> programOfStartup(const CStartupType& startup, const std::string& dataFolder) {
    if (startup.exec.empty()) {
        return std::nullopt;
    }
    std::string program = replaceAll(startup.exec, ZPKPackageLayout::kDataFolderToken, dataFolder);
    if (ZPKPath::extension(program) == "app") {
        return mainProgramOfBundle(program);
    }
    return program;
}

/// The first program of the payload, in the file system's own order.
std::optional<std::string> firstExecutableInFolder(const std::string& folder) {
    std::vector<std::string> names;
    ZPKFileManager::contentsOfFolder(folder, names).ignore();
    for (const std::string& name : names) {
        if (name.front() == '.') {
            continue;
        }
        const std::string path = ZPKPath::join(folder, name);
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

}  // namespace

ZPKCore::ZPKCore(ZPKFrontEnd& frontEnd, const ZPKRemovableVolumes& volumes)
    : m_frontEnd(frontEnd), m_volumes(volumes) {}

ZPKCore::~ZPKCore() = default;

void ZPKCore::awakeFromNib() {
    m_frontEnd.setInterfaceLanguage(
        ZPKInterfaceLanguage::setUp(ZPKMainBundle::mainBundle().resourcePath(), ZPKLanguageInfos::infos()));
    localizeMenu();
}

void ZPKCore::localizeMenu() {
    const std::pair<ZPKMenuItem, const char*> titles[] = {
        {_aboutAppMenuItem, ZPKSTRING_ABOUTZEPHYRKIT}, {_preferencesMenuItem, ZPKSTRING_PREFERENCES},
        {_servicesMenuItem, ZPKSTRING_SERVICES},       {_hideAppMenuItem, ZPKSTRING_HIDEZEPHYRKIT},
        {_hideOthersMenuItem, ZPKSTRING_HIDEOTHERS},   {_showAllMenuItem, ZPKSTRING_SHOWALL},
        {_quitAppMenuItem, ZPKSTRING_QUITZEPHYRKIT},
    };
    for (const auto& [item, key] : titles) {
        m_frontEnd.setMenuItemTitle(item, localized(key));
    }
}

void ZPKCore::applicationWillFinishLaunching() {
    if (isAlreadyExecuting()) {
        m_frontEnd.terminate();
    }
}

bool ZPKCore::isAlreadyExecuting() {
    const std::string name = ownName();
    const pid_t self = getpid();
    const std::vector<ZPKRunningApplication> applications = ZPKRunningApplications::current();
    return std::any_of(applications.begin(), applications.end(),
                       [&](const ZPKRunningApplication& application) {
                           return application.localizedName == name && application.processIdentifier != self;
                       });
}

void ZPKCore::applicationDidFinishLaunching() {
    m_frontEnd.activateIgnoringOtherApps();
    if (!createStagingFolder()) {
        showTemporaryFolderAlert();
        m_frontEnd.terminate();
        return;
    }
    if (mayInstall(unpackDescription(m_stagingFolder))) {
        install(m_stagingFolder);
        m_stagingHolder.reset();
    } else {
        m_stagingHolder.reset();
        // Where a disc was asked for, its window has already told the person.
        if (_filePaths.empty()) {
            showSoftwareListDialog();
        }
    }
    m_frontEnd.terminate();
}

bool ZPKCore::createStagingFolder() {
    const std::optional<std::string> temporaryFolder = ZPKStandardFolders::temporaryFolder();
    if (!temporaryFolder) {
        return false;
    }
    m_stagingFolder = ZPKPackageLayout::stagingFolder(*temporaryFolder);
    m_stagingHolder = std::make_unique<CDirectoryHolder>(m_stagingFolder, m_stagingFolder);
    return CZPKUtil::IsFolderExist(m_stagingFolder);
}

void ZPKCore::removeStagingFolderInUse() {
    if (!m_stagingHolder) {
        return;
    }
    m_stagingHolder.reset();
    // What the archive tool writes meanwhile is removed in turn, until its folder is gone from under it.
    for (int attempt = 0; attempt < 100 && CZPKUtil::IsFileExist(m_stagingFolder); ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        CZPKUtil::DeleteFolder(m_stagingFolder);
    }
}

bool ZPKCore::mayInstall(const std::string& conditionPath) {
    if (checkConditionXML(conditionPath)) {
        return true;
    }
    if (_filePaths.empty()) {
        return false;
    }
    CZPKUtil::DeleteFile(conditionPath);
    return searchSoftwareOnCDVolumes();
}

void ZPKCore::showTemporaryFolderAlert() {
    m_frontEnd.runAlert(
        {localized(ZPKSTRING_TEMPFOLDERCREATEFAILURE), "", localized(ZPKSTRING_OK), ZPKAlertStyle::Critical});
}

/// Gives the path at which the condition description lies, if the package has one.
std::string ZPKCore::unpackDescription(const std::string& stagingFolder) {
    const std::string plainPath = ZPKPackageLayout::plainArchive(stagingFolder, Content::Info);
    CZPKUtil::Unfake(
        ZPKPackageLayout::scrambledArchive(ZPKMainBundle::mainBundle().resourcePath(), Content::Info),
        plainPath);
    CZPKUtil::Extract(plainPath, stagingFolder);
    CZPKUtil::DeleteFile(plainPath);
    const std::string descriptionFolder = ZPKPackageLayout::folder(stagingFolder, Content::Info);
    if (!ZPKFileManager::isFolderNotFollowingLinks(descriptionFolder)) {
        // The condition description may be deleted later: through a link, a file of somebody else's.
        CZPKUtil::DeleteFile(descriptionFolder);
    }
    return ZPKPackageLayout::conditionDescription(stagingFolder);
}

void ZPKCore::install(const std::string& stagingFolder) {
    if (!extractPayload(stagingFolder)) {
        return;
    }
    Parameters params;
    const std::optional<std::string> program = executableFileAtTemporaryFolder(stagingFolder, &params);
    executeFile(program, params, true);
}

/// False when there was no window to show, or when the application is to end before all is unpacked:
/// then no program may be run.
bool ZPKCore::extractPayload(const std::string& stagingFolder) {
    ZPKProgressWindowController controller(m_frontEnd);
    if (controller.window() == nullptr) {
        return false;
    }
    controller.progressIndicator()->setIndeterminate(false);
    controller.setTitle(localized(ZPKSTRING_FILE_EXTRACT));

    const WorkOrder workOrder = {
        {kDataFilePathKey,
         ZPKPackageLayout::scrambledArchive(ZPKMainBundle::mainBundle().resourcePath(), Content::Data)},
        {kTemporaryFolderPathKey, stagingFolder},
        {kProgressControllerKey, &controller},
    };
    std::thread([this, workOrder] { extractDataTask(workOrder); }).detach();
    m_frontEnd.runModalForWindow(*controller.window());
    if (!m_isExtractionOver) {
        controller.close();
        removeStagingFolderInUse();
        return false;
    }

    // The full bar stays on the screen for a moment, so that a short installation is seen at all.
    std::this_thread::sleep_for(std::chrono::seconds(1));
    controller.close();
    return true;
}

void ZPKCore::extractDataTask(const WorkOrder& workOrder) {
    try {
        const std::string dataPath = std::get<std::string>(workOrder.at(kDataFilePathKey));
        const std::string stagingFolder = std::get<std::string>(workOrder.at(kTemporaryFolderPathKey));
        const auto given = workOrder.find(kProgressControllerKey);
        ZPKProgressWindowController* controller =
            given == workOrder.end() ? nullptr : std::get<ZPKProgressWindowController*>(given->second);
        const std::string plainPath = ZPKPackageLayout::plainArchive(stagingFolder, Content::Data);

        showProgress(controller, 10);
        CZPKUtil::Unfake(dataPath, plainPath);
        showProgress(controller, 40);
        CZPKUtil::Extract(plainPath, stagingFolder);
        showProgress(controller, 100);
        CZPKUtil::DeleteFile(plainPath);
    } catch (const std::exception& error) {
        // The main thread waits in its modal loop: it must be let go whatever happens here.
        std::cerr << "Zephyrkit: unpacking the payload failed: " << error.what() << "\n";
    }
    m_isExtractionOver = true;
    m_frontEnd.abortModal();
}

void ZPKCore::showProgress(ZPKProgressWindowController* controller, double percent) {
    if (controller != nullptr) {
        m_frontEnd.performOnMainThreadAndWait(
            [controller, percent] { controller->setProgressValue(percent); });
    }
}

std::optional<std::string> ZPKCore::executableFileAtTemporaryFolder(const std::string& folder,
                                                                    Parameters* params) {
    if (params != nullptr) {
        params->reset();
    }
    const std::string dataFolder = ZPKPackageLayout::folder(folder, Content::Data);
    const std::string startupPath = ZPKPackageLayout::startupDescription(folder);
    if (CZPKUtil::IsFileExist(startupPath)) {
        const std::unique_ptr<const CStartupType> startup(CZPKXMLLoader::LoadStartupXML(startupPath));
        if (startup) {
            // The test is on `exec` alone: a program that is named always gets its one argument,
            // even an empty one, and a parameter without a program counts for nothing.
            if (params != nullptr && !startup->exec.empty()) {
                *params = std::vector<std::string>{startup->param};
            }
            if (std::optional<std::string> program = programOfStartup(*startup, dataFolder)) {
                return program;
            }
        }
    }
    return firstExecutableInFolder(dataFolder);
}

void ZPKCore::executeFile(const std::optional<std::string>& path, const Parameters& params,
                          bool synchronous) {
    if (!path) {
        return;
    }
    ZPKTask task;
    task.setLaunchPath(*path);
    if (params) {
        task.setArguments(*params);
    }
    if (const ZPKOutcome outcome = task.launch(); !outcome) {
        std::cerr << "Zephyrkit: cannot start " << *path << ": " << outcome.failure().reason() << "\n";
        return;
    }
    if (synchronous) {
        task.waitUntilExit();
    }
}

bool ZPKCore::checkConditionXML(const std::string& path) {
    _softwares.clear();
    _filePaths.clear();
    if (!CZPKUtil::IsFileExist(path)) {
        return true;
    }
    // Kept until the process ends.
    const CUpdateInfoType* const info = CZPKXMLLoader::LoadConditionXML(path);
    if (info == nullptr) {
        return false;
    }
    if (info->conditions != nullptr) {
        for (const auto& log : info->conditions->uimLogs) {
            if (UIMLogExistAtSignature(log->signature)) {
                return true;
            }
        }
        for (const auto& uninstall : info->conditions->uninstallXmls) {
            if (uninstallXMLExistAtName(uninstall->appName)) {
                return true;
            }
        }
        for (const auto& disc : info->conditions->discs) {
            _filePaths.push_back(disc->filePath);
        }
    }
    if (info->targetItems != nullptr) {
        _softwares = info->targetItems->GetDisplayNameList();
    }
    return false;
}

bool ZPKCore::UIMLogExistAtSignature(const std::string& signature) {
    const std::optional<std::string> library = ZPKStandardFolders::localLibraryFolder();
    if (!library) {
        return false;
    }
    const auto list = ZPKPropertyList::dictionaryWithContentsOfFile(
        ZPKPath::join(*library, "Preferences/com.varno.ic_installer.plist"));
    if (!list) {
        return false;
    }
    const auto signatures = list->stringArrayForKey("Varno Utilities");
    return signatures && std::find(signatures->begin(), signatures->end(), signature) != signatures->end();
}

bool ZPKCore::uninstallXMLExistAtName(const std::string& name) {
    const std::optional<std::string> support = ZPKStandardFolders::localApplicationSupportFolder();
    return support && CZPKUtil::IsFileExist(
                          ZPKPath::join(ZPKPath::join(*support, "Varno_Inc_IC/Tandemset/Uninstall"), name));
}

bool ZPKCore::searchSoftwareOnCDVolumes() {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, _filePaths, _softwares);
    return controller.runModal();
}

void ZPKCore::showSoftwareListDialog() {
    m_frontEnd.runAlert({ZPKSoftwareListText(localized(ZPKSTRING_UPDATE_FAILURE), _softwares), "",
                         localized(ZPKSTRING_OK), ZPKAlertStyle::Critical});
}
