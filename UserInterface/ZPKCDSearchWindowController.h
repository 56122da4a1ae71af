// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "UserInterface/ZPKCDSearchWindow.h"

class ZPKFrontEnd;
class ZPKRemovableVolumes;

/// The window that asks for the installation disc, and what a person can do with it. Main thread only;
/// one search at a time runs on a worker thread, which touches no window.
class ZPKCDSearchWindowController {
public:
    /// Makes the window (not shown yet) and fills it. `searchPaths` are paths or patterns with "*"
    /// and "?", relative to a disc; `softwares` are the names shown. `frontEnd` and `volumes`
    /// outlive the controller.
    ZPKCDSearchWindowController(ZPKFrontEnd& frontEnd, const ZPKRemovableVolumes& volumes,
                                std::vector<std::string> searchPaths, std::vector<std::string> softwares);
    ZPKCDSearchWindowController(const ZPKCDSearchWindowController&) = delete;
    ZPKCDSearchWindowController& operator=(const ZPKCDSearchWindowController&) = delete;

    /// The window, or null when the front end could not make it.
    ZPKCDSearchWindow* window() const { return m_window.get(); }

    /// Runs the window as the application's modal window. True when that ended because a search found
    /// the disc; whatever else ended it, Quit while a search ran for instance, counts as Cancel.
    bool runModal();

    /// True once a search has found the disc; never reset.
    bool isFind() const { return _isFind; }

    /// Searches the mounted volumes once under an endless progress window. Found: ends the modal
    /// loop and closes the window; else says so and leaves the window open. When the modal loop ends
    /// meanwhile the search ends, too, and nothing is said. While a search runs this does nothing.
    void pushSearch();

    /// Aborts the modal loop and closes the window.
    void pushCancel();

    /// Aborts the modal loop; true, so that the window closes.
    bool windowShouldClose();

private:
    enum class SearchEnd {
        Completed,
        /// The modal loop around the search was stopped first.
        Cancelled,
        /// The front end could not make the progress window, so that there was no search.
        NoWindow,
    };

    void awakeFromNib();
    void setupFont();
    /// Runs one search to its end; the worker and the progress window are gone when it returns.
    SearchEnd searchUnderProgressWindow();
    /// Handles events until the search is over; false when the modal loop around it was stopped.
    bool runSessionForWindow(ZPKWindow& window);
    void searchTaskOnWorkerThread(const std::stop_token& stop);
    void showInvalidDiscAlert();

    ZPKFrontEnd& m_frontEnd;
    const ZPKRemovableVolumes& m_volumes;
    std::unique_ptr<ZPKCDSearchWindow> m_window;
    const std::vector<std::string> _searchPaths;
    const std::vector<std::string> _softwares;
    std::atomic<bool> _isFind = false;
    /// Cleared by the worker as the last thing it does with this object.
    std::atomic<bool> _isSearching = false;
};
