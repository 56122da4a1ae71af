// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKCDSearchWindowController.h"

#include <exception>
#include <thread>
#include <utility>

#include "Base/ZPKDiagnostic.h"
#include "Common/CLocalizerUtil.h"
#include "Common/ZPKCoreStringDefine.h"
#include "UserInterface/ZPKDiscSearch.h"
#include "UserInterface/ZPKFrontEnd.h"
#include "UserInterface/ZPKProgressWindowController.h"

using namespace varno_zpk;

namespace {

std::string joinLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (&line == &lines.front() ? "" : "\n") + line;
    }
    return text;
}

}  // namespace

ZPKCDSearchWindowController::ZPKCDSearchWindowController(ZPKFrontEnd& frontEnd,
                                                         const ZPKRemovableVolumes& volumes,
                                                         std::vector<std::string> searchPaths,
                                                         std::vector<std::string> softwares)
    : m_frontEnd(frontEnd),
      m_volumes(volumes),
      m_window(frontEnd.createCDSearchWindow()),
      _searchPaths(std::move(searchPaths)),
      _softwares(std::move(softwares)) {
    if (m_window) {
        awakeFromNib();
    }
}

void ZPKCDSearchWindowController::awakeFromNib() {
    m_window->setActions(
        {[this] { pushSearch(); }, [this] { pushCancel(); }, [this] { return windowShouldClose(); }});
    m_window->center();
    setupFont();
    m_window->setTitle(localized(ZPKSTRING_DISCCHECK_TITLE));
    m_window->setMessage(localized(ZPKSTRING_DISCCHECK_MESSAGE));
    m_window->setSearchButtonTitle(localized(ZPKSTRING_DISCCHECK_START));
    m_window->setCancelButtonTitle(localized(ZPKSTRING_DISCCHECK_CANCEL));
    m_window->setProductList(joinLines(_softwares));
}

void ZPKCDSearchWindowController::setupFont() {
    const std::string name = localized(ZPKSTRING_FONTNAME_FORMAC);
    if (name.empty()) {
        return;
    }
    for (const ZPKCDSearchControl control :
         {ZPKCDSearchControl::TextField, ZPKCDSearchControl::TextView, ZPKCDSearchControl::CancelButton,
          ZPKCDSearchControl::SearchButton}) {
        m_window->setFontName(control, name);
    }
}

void ZPKCDSearchWindowController::pushCancel() {
    m_frontEnd.stopModal(ZPKModalResponseAbort);
    m_window->close();
}

bool ZPKCDSearchWindowController::windowShouldClose() {
    m_frontEnd.stopModal(ZPKModalResponseAbort);
    return true;
}

bool ZPKCDSearchWindowController::runModal() {
    return m_window && m_frontEnd.runModalForWindow(*m_window) == ZPKModalResponseStop && _isFind;
}

void ZPKCDSearchWindowController::pushSearch() {
    // The button cannot be reached meanwhile, but assistive tools press it all the same.
    if (_isSearching) {
        return;
    }
    switch (searchUnderProgressWindow()) {
        case SearchEnd::NoWindow:
            pushCancel();
            return;
        case SearchEnd::Cancelled:
            return;
        case SearchEnd::Completed:
            break;
    }
    if (_isFind) {
        m_frontEnd.stopModal(ZPKModalResponseStop);
        m_window->close();
    } else {
        showInvalidDiscAlert();
    }
}

ZPKCDSearchWindowController::SearchEnd ZPKCDSearchWindowController::searchUnderProgressWindow() {
    ZPKProgressWindowController progress(m_frontEnd);
    if (progress.window() == nullptr) {
        return SearchEnd::NoWindow;
    }
    _isSearching = true;
    // Whatever ends this, the worker is told to stop, and has ended before anything it uses goes.
    const std::jthread worker([this](const std::stop_token& stop) { searchTaskOnWorkerThread(stop); });

    progress.progressIndicator()->setIndeterminate(true);
    progress.progressIndicator()->startAnimation();
    progress.window()->makeKeyAndOrderFront();
    progress.setTitle(localized(ZPKSTRING_DISCCHECK_SERACHING));
    const bool isWanted = runSessionForWindow(*progress.window());
    progress.progressIndicator()->stopAnimation();
    progress.close();
    return isWanted ? SearchEnd::Completed : SearchEnd::Cancelled;
}

bool ZPKCDSearchWindowController::runSessionForWindow(ZPKWindow& window) {
    const std::unique_ptr<ZPKModalSession> session = m_frontEnd.beginModalSessionForWindow(window);
    while (_isSearching) {
        if (!session->run()) {
            return false;
        }
    }
    return true;
}

void ZPKCDSearchWindowController::showInvalidDiscAlert() {
    m_frontEnd.runAlert(
        {localized(ZPKSTRING_UPDATE_INVALID_DISC), "", localized(ZPKSTRING_OK), ZPKAlertStyle::Critical});
}

void ZPKCDSearchWindowController::searchTaskOnWorkerThread(const std::stop_token& stop) {
    try {
        if (ZPKDiscSearch(m_volumes, _searchPaths).findsDisc(stop)) {
            _isFind = true;
        }
    } catch (const std::exception& error) {
        // The main thread waits for this search to end, whatever happens in it.
        ZPKDiagnostic::tell({"the disc search failed: ", error.what()});
    }
    _isSearching = false;
}
