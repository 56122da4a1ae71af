#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "UserInterface/ZPKFrontEnd.h"

class ZPKProgressWindowController;

/// The application delegate: carries out the one run from the language set-up to the removal of
/// everything that was unpacked. All on the main thread, except `extractDataTask`.
class ZPKCore : public ZPKApplicationDelegate {
public:
    /// `frontEnd` outlives the delegate.
    explicit ZPKCore(ZPKFrontEnd& frontEnd);
    ~ZPKCore() override;
    ZPKCore(const ZPKCore&) = delete;
    ZPKCore& operator=(const ZPKCore&) = delete;

    /// Sets up the languages and localizes the application menu.
    void awakeFromNib() override;

    /// Terminates at once when another instance runs.
    void applicationWillFinishLaunching() override;

    /// The launch sequence. Every path through it removes the staging folder and terminates.
    void applicationDidFinishLaunching() override;

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

    void localizeMenu();
    std::string unpackDescription(const std::string& stagingFolder);
    void install(const std::string& stagingFolder);
    void extractPayload(const std::string& stagingFolder);
    void showProgress(ZPKProgressWindowController* controller, double percent);
    void showTemporaryFolderAlert();

    ZPKFrontEnd& m_frontEnd;

    /// Display names of the products that the package applies to.
    std::vector<std::string> _softwares;
    /// Paths or patterns of the files that identify the disc.
    std::vector<std::string> _filePaths;

    ZPKMenuItem _aboutAppMenuItem = ZPKMenuItem::About;
    ZPKMenuItem _preferencesMenuItem = ZPKMenuItem::Preferences;
    ZPKMenuItem _servicesMenuItem = ZPKMenuItem::Services;
    ZPKMenuItem _hideAppMenuItem = ZPKMenuItem::Hide;
    ZPKMenuItem _hideOthersMenuItem = ZPKMenuItem::HideOthers;
    ZPKMenuItem _showAllMenuItem = ZPKMenuItem::ShowAll;
    ZPKMenuItem _quitAppMenuItem = ZPKMenuItem::Quit;
};
