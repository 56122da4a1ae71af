// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKCore.h"

#include <string_view>
#include <utility>

#include "Base/ZPKDiagnostic.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKTerminalText.h"
#include "Common/CLocalizerUtil.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Description/ZPKSetupProgramFinder.h"
#include "InstallerCore/ZPKConditionCheck.h"
#include "InstallerCore/ZPKInterfaceLanguage.h"
#include "InstallerCore/ZPKLanguageInfos.h"
#include "InstallerCore/ZPKSetupProgramRunner.h"
#include "InstallerCore/ZPKSoftwareListText.h"
#include "InstallerCore/ZPKStagingFolder.h"
#include "Package/CZPKUtil.h"
#include "Package/ZPKPackageLayout.h"
#include "Package/ZPKPackageTitle.h"
#include "Package/ZPKStagedItem.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKMainBundle.h"
#include "UserInterface/ZPKCDSearchWindowController.h"

using namespace varno_zpk;
using Content = ZPKPackageLayout::Content;

namespace {

constexpr std::string_view kLauncherName = "Zephyrkit";

std::string resourceFolder() {
    return ZPKMainBundle::mainBundle().resourcePath();
}

}  // namespace

ZPKCore::ZPKCore(ZPKFrontEnd& frontEnd, const ZPKRemovableVolumes& volumes, ZPKClock& clock)
    : m_frontEnd(frontEnd), m_volumes(volumes), m_clock(clock), m_extraction(frontEnd, clock) {}

ZPKCore::~ZPKCore() = default;

void ZPKCore::awakeFromNib() {
    const std::string language = ZPKInterfaceLanguage::setUp(resourceFolder(), ZPKLanguageInfos::infos());
    m_frontEnd.setInterfaceLanguage(language);
    const std::optional<std::string> displayName =
        ZPKPackageTitle::find(ZPKMainBundle::mainBundle(), language);
    if (displayName) {
        m_frontEnd.setDisplayName(*displayName);
    }
    localizeMenu(displayName.value_or(ZPKMainBundle::mainBundle().localizedName()));
}

/// The launcher's own name in an item stands for that of the package.
void ZPKCore::localizeMenu(const std::string& packageName) {
    const std::pair<ZPKMenuItem, const char*> titles[] = {
        {_aboutAppMenuItem, ZPKSTRING_ABOUTZEPHYRKIT}, {_preferencesMenuItem, ZPKSTRING_PREFERENCES},
        {_servicesMenuItem, ZPKSTRING_SERVICES},       {_hideAppMenuItem, ZPKSTRING_HIDEZEPHYRKIT},
        {_hideOthersMenuItem, ZPKSTRING_HIDEOTHERS},   {_showAllMenuItem, ZPKSTRING_SHOWALL},
        {_quitAppMenuItem, ZPKSTRING_QUITZEPHYRKIT},
    };
    for (const auto& [item, key] : titles) {
        std::string title = localized(key);
        const std::size_t at = title.find(kLauncherName);
        if (title != key && at != std::string::npos) {
            title.replace(at, kLauncherName.size(), packageName);
        }
        m_frontEnd.setMenuItemTitle(item, title);
    }
}

void ZPKCore::applicationWillFinishLaunching() {
    if (isAlreadyExecuting()) {
        m_frontEnd.terminate();
    }
}

bool ZPKCore::isAlreadyExecuting() {
    return m_singleInstance.isOtherRunning(m_clock, [this] { return m_earlyEnd.isAsked(); });
}

void ZPKCore::applicationDidFinishLaunching() {
    m_frontEnd.activateIgnoringOtherApps();
    if (!createStagingFolder()) {
        showCriticalAlert(ZPKSTRING_TEMPFOLDERCREATEFAILURE);
        m_frontEnd.terminate();
        return;
    }
    tellOfUnpacking(Content::Info, m_stagingFolder->unpackDescription(resourceFolder(), m_descriptionTool));
    if (!m_earlyEnd.isAsked() && mayInstall()) {
        install();
        m_stagingFolder.reset();
        if (m_couldNotStart) {
            showCriticalAlert(ZPKSTRING_ERROR_INIT);
        }
    } else {
        m_stagingFolder.reset();
        // Where a disc was asked for, its window has already told the person.
        if (_filePaths.empty()) {
            showSoftwareListDialog();
        }
    }
    m_frontEnd.terminate();
}

void ZPKCore::cutShort() {
    m_extraction.stop();
    m_stagingFolder.reset();
}

bool ZPKCore::askForEnd(int signal) {
    if (!m_earlyEnd.ask(signal)) {
        return false;
    }
    m_descriptionTool.terminate();
    m_extraction.terminateTool();
    return true;
}

int ZPKCore::exitStatus() const {
    constexpr int kEndedBySignal = 128;
    return m_earlyEnd.isAsked() ? kEndedBySignal + m_earlyEnd.signal() : m_couldNotStart ? 1 : 0;
}

bool ZPKCore::createStagingFolder() {
    ZPKResult<std::unique_ptr<ZPKStagingFolder>> folder = ZPKStagingFolder::make();
    if (!folder) {
        ZPKDiagnostic::tell({folder.failure().message()});
        return false;
    }
    m_stagingFolder = std::move(*folder);
    return true;
}

bool ZPKCore::mayInstall() {
    const std::string conditionPath = ZPKPackageLayout::conditionDescription(m_stagingFolder->path());
    if (checkConditionXML(conditionPath)) {
        return true;
    }
    if (_filePaths.empty()) {
        return false;
    }
    // It was read, so that it is in the staging folder; a link on the way to it is not followed.
    CZPKUtil::DeleteFile(ZPKStagedItem(conditionPath, m_stagingFolder->path()).place());
    return searchSoftwareOnCDVolumes();
}

void ZPKCore::install() {
    const std::string archive = ZPKPackageLayout::scrambledArchive(resourceFolder(), Content::Data);
    if (!m_extraction.run(archive, m_stagingFolder->path(), localized(ZPKSTRING_FILE_EXTRACT))) {
        return;
    }
    tellOfUnpacking(Content::Data, m_extraction.outcome());
    runSetupProgram();
}

/// The person is told nothing; whoever looks for the cause finds a line. A bundle without the archive has
/// nothing to unpack.
void ZPKCore::tellOfUnpacking(Content content, const ZPKOutcome& outcome) const {
    const std::string archive = ZPKPackageLayout::scrambledArchive(resourceFolder(), content);
    if (!outcome && !m_earlyEnd.isAsked() && ZPKFileManager::fileExists(archive)) {
        ZPKDiagnostic::tell(
            {"cannot unpack ", ZPKTerminalText::printable(archive), ": ", outcome.failure().message()});
    }
}

void ZPKCore::runSetupProgram() {
    Parameters params;
    const std::optional<std::string> program =
        executableFileAtTemporaryFolder(m_stagingFolder->path(), &params);
    // A program that was not unpacked is a failure of the unpacking, which is not the person's business.
    const bool wasUnpacked = m_extraction.outcome() || !program || ZPKFileManager::fileExists(*program);
    // Whoever asked for the end while it was unpacked gets no setup program of half a payload.
    if (m_earlyEnd.beginSetup()) {
        executeFile(program, params, true);
        m_couldNotStart = m_couldNotStart && wasUnpacked;
        m_earlyEnd.endSetup();
    }
}

void ZPKCore::extractDataTask(const WorkOrder& workOrder) {
    m_extraction.extract(workOrder);
}

std::optional<std::string> ZPKCore::executableFileAtTemporaryFolder(const std::string& folder,
                                                                    Parameters* params) {
    ZPKSetupProgram program = ZPKSetupProgramFinder::find(folder);
    if (params != nullptr) {
        *params = std::move(program.parameters);
    }
    return std::move(program.path);
}

void ZPKCore::executeFile(const std::optional<std::string>& path, const Parameters& params,
                          bool synchronous) {
    const std::unique_ptr<ZPKExpectedProgram> expected = path ? m_frontEnd.expectProgram(*path) : nullptr;
    const ZPKOutcome outcome = ZPKSetupProgramRunner::run(
        {path, params}, synchronous, expected ? expected->environment() : std::vector<std::string>());
    m_couldNotStart = !outcome;
    if (!outcome) {
        ZPKDiagnostic::tell({"cannot start ", outcome.failure().message()});
    }
}

bool ZPKCore::checkConditionXML(const std::string& path) {
    // The description stands in the staging folder's `Info`.
    const std::string stagingFolder = ZPKPath::parent(ZPKPath::parent(path));
    ZPKConditionAnswer answer = ZPKConditionCheck::check(path, stagingFolder);
    _softwares = std::move(answer.products);
    _filePaths = std::move(answer.discPaths);
    return answer.isMet;
}

bool ZPKCore::UIMLogExistAtSignature(const std::string& signature) {
    return ZPKConditionCheck::isSignatureInstalled(signature);
}

bool ZPKCore::uninstallXMLExistAtName(const std::string& name) {
    return ZPKConditionCheck::isUninstallDescriptionThere(name);
}

bool ZPKCore::searchSoftwareOnCDVolumes() {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, _filePaths, _softwares);
    return controller.runModal();
}

void ZPKCore::showSoftwareListDialog() {
    showAlert(ZPKSoftwareListText(localized(ZPKSTRING_UPDATE_FAILURE), _softwares));
}

void ZPKCore::showCriticalAlert(const char* key) {
    showAlert(localized(key));
}

/// Nobody who has asked for the end is held up.
void ZPKCore::showAlert(const std::string& text) {
    if (!m_earlyEnd.isAsked()) {
        m_frontEnd.runAlert({text, "", localized(ZPKSTRING_OK), ZPKAlertStyle::Critical});
    }
}
