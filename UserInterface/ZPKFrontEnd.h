// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "UserInterface/ZPKCDSearchWindow.h"
#include "UserInterface/ZPKExpectedProgram.h"
#include "UserInterface/ZPKProgressWindow.h"
#include "UserInterface/ZPKWindow.h"

/// The items of the application menu, in its order.
enum class ZPKMenuItem { About, Preferences, Services, Hide, HideOthers, ShowAll, Quit };

enum class ZPKAlertStyle { Warning = 0, Informational = 1, Critical = 2 };

/// A message with one button, which is its default and its cancel button.
struct ZPKAlert {
    std::string messageText;
    std::string informativeText;
    std::string buttonTitle;
    ZPKAlertStyle style = ZPKAlertStyle::Critical;
};

/// How a modal loop ended.
enum ZPKModalResponse : int { ZPKModalResponseStop = -1000, ZPKModalResponseAbort = -1001 };

/// The object that the application sends its life to. Main thread only.
class ZPKApplicationDelegate {
public:
    virtual ~ZPKApplicationDelegate() = default;

    virtual void awakeFromNib() = 0;
    virtual void applicationWillFinishLaunching() = 0;
    virtual void applicationDidFinishLaunching() = 0;
};

/// A modal loop that its owner turns by hand. Ends when destroyed. Main thread only.
class ZPKModalSession {
public:
    virtual ~ZPKModalSession() = default;

    /// Handles the events that are waiting; when there are none, waits a moment for one. False once the
    /// modal loop around the session is stopped, or the application is to end: the owner comes to an
    /// end, too, and returns.
    virtual bool run() = 0;
};

/// What the launch sequence asks of the windows: the desktop, or the terminal, or a test's script.
/// All on the main thread, except where said.
class ZPKFrontEnd {
public:
    virtual ~ZPKFrontEnd() = default;

    /// The application's main routine: loads the main menu, sends `delegate` its three messages in
    /// order, and returns the exit status once `terminate` was called and the message in progress
    /// has returned; no message is sent after that. A menu or a window form that cannot be loaded is
    /// a line on standard error and exit status 1.
    virtual int run(ZPKApplicationDelegate& delegate) = 0;

    /// Asks `run` to return. The caller returns from its message at once: modal loops that run, and
    /// those begun after it, end with `ZPKModalResponseAbort`.
    virtual void terminate() = 0;

    virtual void activateIgnoringOtherApps() = 0;

    /// Tells in which language the texts are, for the direction of reading and the font.
    virtual void setInterfaceLanguage(const std::string& code) = 0;

    /// Tells what the package is called in the windows; until then it is the bundle's name.
    virtual void setDisplayName(const std::string&) {}

    virtual void setMenuItemTitle(ZPKMenuItem item, const std::string& title) = 0;

    /// New windows, not on the screen yet; the front end outlives them. Null when the form cannot be loaded;
    /// then a line on standard error has said so, `run` will give 1, and the caller cleans up and terminates.
    virtual std::unique_ptr<ZPKProgressWindow> createProgressWindow() = 0;
    virtual std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() = 0;

    /// Tells the desktop of the program at `path`, which is about to be started. Null where there is no
    /// desktop that wants to know.
    virtual std::unique_ptr<ZPKExpectedProgram> expectProgram(const std::string&) { return nullptr; }

    /// Shows the alert and returns when it was answered.
    virtual void runAlert(const ZPKAlert& alert) = 0;

    /// Shows the window and handles events until the modal loop is stopped or aborted; gives the
    /// code it was stopped with. Does not close the window.
    virtual int runModalForWindow(ZPKWindow& window) = 0;

    /// Ends the innermost modal loop with `code`.
    virtual void stopModal(int code) = 0;

    /// Ends the modal loop with `ZPKModalResponseAbort`. May be called from any thread; one that
    /// comes before the loop starts ends the next loop at once.
    virtual void abortModal() = 0;

    /// Lets a person who is being asked give no answer, which counts as Cancel: true, and false when nobody
    /// is asked where a key could do this. Any thread.
    virtual bool cancelQuestion() { return false; }

    /// Shows the window and begins a modal loop for it.
    virtual std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow& window) = 0;

    /// Runs `action` on the main thread and waits until it is done. May be called from any thread;
    /// from the main thread it simply runs it. The main thread takes it in its loops, so that it waits
    /// while none runs. What still waits when `run` ends, or comes later, is left out.
    virtual void performOnMainThreadAndWait(const std::function<void()>& action) = 0;

    /// Leaves out the actions that wait for the main thread and those that still come, and lets the
    /// threads that wait go on: for a main thread that is about to join them, or that ends the process.
    /// Main thread only, also from inside such an action.
    virtual void closeToOtherThreads() = 0;
};
