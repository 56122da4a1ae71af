// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "InstallerCore/ZPKEarlyEnd.h"
#include "InstallerCore/ZPKPayloadExtraction.h"
#include "InstallerCore/ZPKSingleInstance.h"
#include "Package/ZPKArchiveTool.h"
#include "Package/ZPKPackageLayout.h"
#include "UserInterface/ZPKFrontEnd.h"

class ZPKClock;
class ZPKRemovableVolumes;
class ZPKStagingFolder;

/// The application delegate: the one run, from the language set-up to the removal of everything that was
/// unpacked, in its order. What each step does is its own class's. All on the main thread, except
/// `extractDataTask` and `askForEnd`.
class ZPKCore : public ZPKApplicationDelegate {
public:
    using Parameters = std::optional<std::vector<std::string>>;
    using WorkOrder = ZPKPayloadExtraction::WorkOrder;

    /// All three outlive the delegate.
    ZPKCore(ZPKFrontEnd& frontEnd, const ZPKRemovableVolumes& volumes, ZPKClock& clock);
    ~ZPKCore() override;
    ZPKCore(const ZPKCore&) = delete;
    ZPKCore& operator=(const ZPKCore&) = delete;

    /// Sets up the languages and localizes the application menu.
    void awakeFromNib() override;

    /// Terminates at once when another instance runs.
    void applicationWillFinishLaunching() override;

    /// The launch sequence. Every path through it removes the staging folder and terminates.
    void applicationDidFinishLaunching() override;

    /// Ends the unpacking, if it is going on, and removes the staging folder, if there is one: where the
    /// process exits in mid-run.
    void cutShort();

    /// Asks for the end of the run, as `signal` does: the archive tool is ended, and what follows is left
    /// out. False, and nothing is done, while the setup program runs. Any thread; the main thread may then be
    /// in a modal loop, which is the caller's to end.
    bool askForEnd(int signal);

    /// 128 plus the signal's number when the run was asked to end, 1 when the setup program could not be
    /// started, 0 otherwise.
    int exitStatus() const;

    /// True when another running application carries this one's name, and is not about to end because of this
    /// one.
    bool isAlreadyExecuting();

    /// Whether the package may be installed on this machine: a product that it updates is installed, or
    /// the staging folder has no condition description at `path`, `Info/Condition.xml` in it. When not,
    /// the products and the discs that the description names are kept for the two operations that tell
    /// the person.
    bool checkConditionXML(const std::string& path);

    /// Whether the signature stands in the list of installed software.
    bool UIMLogExistAtSignature(const std::string& signature);

    /// Whether an uninstall description of that name exists; an empty name asks for their folder.
    bool uninstallXMLExistAtName(const std::string& name);

    /// Runs the disc search window; true when the disc was found.
    bool searchSoftwareOnCDVolumes();

    /// Tells which products the package applies to.
    void showSoftwareListDialog();

    /// Unpacks the payload, reports 10, 40 and 100 percent and ends the modal loop. Any thread; what it is
    /// given outlives it.
    void extractDataTask(const WorkOrder& workOrder);

    /// Finds the setup program in the staging folder: what the startup description names, else the
    /// first executable of the payload. `params`, when given, receives the argument list, or
    /// nothing when the program is to be started without arguments.
    std::optional<std::string> executableFileAtTemporaryFolder(const std::string& folder, Parameters* params);

    /// Starts the program, if there is one; when `synchronous`, waits until it has exited. One that cannot
    /// be started is a line on standard error, and kept in mind for the person.
    void executeFile(const std::optional<std::string>& path, const Parameters& params, bool synchronous);

private:
    void localizeMenu(const std::string& packageName);
    bool createStagingFolder();
    bool mayInstall();
    void install();
    void tellOfUnpacking(ZPKPackageLayout::Content content, const ZPKOutcome& outcome) const;
    void runSetupProgram();
    void showCriticalAlert(const char* key);
    void showAlert(const std::string& text);

    ZPKFrontEnd& m_frontEnd;
    const ZPKRemovableVolumes& m_volumes;
    ZPKClock& m_clock;

    /// Display names of the products that the package applies to.
    std::vector<std::string> _softwares;
    /// Paths or patterns of the files that identify the disc.
    std::vector<std::string> _filePaths;

    bool m_couldNotStart = false;
    ZPKEarlyEnd m_earlyEnd;
    ZPKSingleInstance m_singleInstance;
    ZPKArchiveTool m_descriptionTool;

    /// While the sequence needs it.
    std::unique_ptr<ZPKStagingFolder> m_stagingFolder;

    /// Ends before the folder that it writes to.
    ZPKPayloadExtraction m_extraction;

    ZPKMenuItem _aboutAppMenuItem = ZPKMenuItem::About;
    ZPKMenuItem _preferencesMenuItem = ZPKMenuItem::Preferences;
    ZPKMenuItem _servicesMenuItem = ZPKMenuItem::Services;
    ZPKMenuItem _hideAppMenuItem = ZPKMenuItem::Hide;
    ZPKMenuItem _hideOthersMenuItem = ZPKMenuItem::HideOthers;
    ZPKMenuItem _showAllMenuItem = ZPKMenuItem::ShowAll;
    ZPKMenuItem _quitAppMenuItem = ZPKMenuItem::Quit;
};
