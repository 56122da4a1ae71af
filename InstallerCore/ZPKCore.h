// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "UserInterface/ZPKFrontEnd.h"

namespace varno_zpk {
class CDirectoryHolder;
}

class ZPKProgressWindowController;
class ZPKRemovableVolumes;

/// The application delegate: carries out the one run from the language set-up to the removal of
/// everything that was unpacked. All on the main thread, except `extractDataTask`.
class ZPKCore : public ZPKApplicationDelegate {
public:
    /// `frontEnd` and `volumes` outlive the delegate.
    ZPKCore(ZPKFrontEnd& frontEnd, const ZPKRemovableVolumes& volumes);
    ~ZPKCore() override;
    ZPKCore(const ZPKCore&) = delete;
    ZPKCore& operator=(const ZPKCore&) = delete;

    /// Sets up the languages and localizes the application menu.
    void awakeFromNib() override;

    /// Terminates at once when another instance runs.
    void applicationWillFinishLaunching() override;

    /// The launch sequence. Every path through it removes the staging folder and terminates.
    void applicationDidFinishLaunching() override;

    /// Removes the staging folder, if there is one, although the archive tool may still write to it:
    /// when the run is cut short, or cannot go on because the toolkit ends the process. On the main
    /// thread, also while the process exits.
    void removeStagingFolderInUse();

private:
    /// The one test program that may call the private operations.
    friend struct ZPKCoreTestDoor;

    using Parameters = std::optional<std::vector<std::string>>;

    /// What the extraction thread is given: "DataFilePath" and "TemporaryFolderPath", both full
    /// paths, and "ProgressController", which may be absent.
    using WorkOrder = std::map<std::string, std::variant<std::string, ZPKProgressWindowController*>>;

    /// Finds the setup program in the staging folder: what the startup description names, else the
    /// first executable of the payload. `params`, when given, receives the argument list, or
    /// nothing when the program is to be started without arguments.
    std::optional<std::string> executableFileAtTemporaryFolder(const std::string& folder, Parameters* params);

    /// Starts the program, if there is one; when `synchronous`, waits until it has exited.
    void executeFile(const std::optional<std::string>& path, const Parameters& params, bool synchronous);

    /// Unpacks the payload, reports 10, 40 and 100 percent and ends the modal loop. Runs on a
    /// thread of its own; everything it is given outlives it until the loop has ended.
    void extractDataTask(const WorkOrder& workOrder);

    /// True when another running application carries this one's name.
    bool isAlreadyExecuting();

    /// Whether the package may be installed on this machine: a product that it updates is installed,
    /// or it has no conditions at all. When not, `_softwares` and `_filePaths` say why.
    bool checkConditionXML(const std::string& path);

    /// Whether the signature stands in the list of installed software.
    bool UIMLogExistAtSignature(const std::string& signature);

    /// Whether an uninstall description of that name exists; an empty name asks for their folder.
    bool uninstallXMLExistAtName(const std::string& name);

    /// Runs the disc search window; true when the disc was found.
    bool searchSoftwareOnCDVolumes();

    /// Tells which products the package applies to.
    void showSoftwareListDialog();

    void localizeMenu();
    bool createStagingFolder();
    bool mayInstall(const std::string& conditionPath);
    std::string unpackDescription(const std::string& stagingFolder);
    void install(const std::string& stagingFolder);
    bool extractPayload(const std::string& stagingFolder);
    void showProgress(ZPKProgressWindowController* controller, double percent);
    void showTemporaryFolderAlert();

    ZPKFrontEnd& m_frontEnd;
    const ZPKRemovableVolumes& m_volumes;

    /// Display names of the products that the package applies to.
    std::vector<std::string> _softwares;
    /// Paths or patterns of the files that identify the disc.
    std::vector<std::string> _filePaths;

    /// The staging folder while the sequence needs it.
    std::unique_ptr<varno_zpk::CDirectoryHolder> m_stagingHolder;
    std::string m_stagingFolder;

    /// Set by the extraction thread before it ends the modal loop.
    std::atomic<bool> m_isExtractionOver{false};

    ZPKMenuItem _aboutAppMenuItem = ZPKMenuItem::About;
    ZPKMenuItem _preferencesMenuItem = ZPKMenuItem::Preferences;
    ZPKMenuItem _servicesMenuItem = ZPKMenuItem::Services;
    ZPKMenuItem _hideAppMenuItem = ZPKMenuItem::Hide;
    ZPKMenuItem _hideOthersMenuItem = ZPKMenuItem::HideOthers;
    ZPKMenuItem _showAllMenuItem = ZPKMenuItem::ShowAll;
    ZPKMenuItem _quitAppMenuItem = ZPKMenuItem::Quit;
};
