// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKCDSearchWindowController.h"

#include <exception>
#include <iostream>
#include <thread>
#include <utility>

#include "Base/ZPKPath.h"
#include "Common/CLocalizerUtil.h"
#include "Common/WildCard.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Package/CZPKUtil.h"
#include "UserInterface/ZPKFrontEnd.h"
#include "UserInterface/ZPKProgressWindowController.h"
#include "UserInterface/ZPKRemovableVolumes.h"

using namespace varno_zpk;

namespace {

std::string joinLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (&line == &lines.front() ? "" : "\n") + line;
    }
    return text;
}

bool isPattern(const std::string& searchPath) {
    return searchPath.find_first_of("*?") != std::string::npos;
}

/// A pattern that begins with a star continues the volume's own path; any other begins below it.
std::string fullPattern(const std::string& volume, const std::string& searchPath) {
    return searchPath.front() == '*' ? volume + searchPath : ZPKPath::join(volume, searchPath);
}

bool anyMatches(const std::string& pattern, const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        if (WildCard::Match(pattern, path)) {
            return true;
        }
    }
    return false;
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

void ZPKCDSearchWindowController::pushSearch() {
    if (!searchUnderProgressWindow()) {
        pushCancel();
        return;
    }
    if (_isFind) {
        m_frontEnd.stopModal(ZPKModalResponseStop);
        m_window->close();
    } else {
        showInvalidDiscAlert();
    }
}

bool ZPKCDSearchWindowController::searchUnderProgressWindow() {
    ZPKProgressWindowController progress(m_frontEnd);
    if (progress.window() == nullptr) {
        return false;
    }
    _isSearching = true;
    std::thread([this] { searchTaskOnWorkerThread(); }).detach();

    progress.progressIndicator()->setIndeterminate(true);
    progress.progressIndicator()->startAnimation();
    progress.window()->makeKeyAndOrderFront();
    progress.setTitle(localized(ZPKSTRING_DISCCHECK_SERACHING));
    {
        const std::unique_ptr<ZPKModalSession> session =
            m_frontEnd.beginModalSessionForWindow(*progress.window());
        while (_isSearching) {
            session->run();
        }
    }
    progress.progressIndicator()->stopAnimation();
    progress.close();
    return true;
}

void ZPKCDSearchWindowController::showInvalidDiscAlert() {
    m_frontEnd.runAlert(
        {localized(ZPKSTRING_UPDATE_INVALID_DISC), "", localized(ZPKSTRING_OK), ZPKAlertStyle::Critical});
}

void ZPKCDSearchWindowController::searchTaskOnWorkerThread() {
    try {
        for (const std::string& volume : m_volumes.mountedRemovableMedia()) {
            if (_isFind) {
                break;
            }
            if (m_volumes.isCDMediaAtPath(volume) && volumeHoldsDisc(volume)) {
                _isFind = true;
            }
        }
    } catch (const std::exception& error) {
        // The main thread waits for this search to end, whatever happens in it.
        std::cerr << "Zephyrkit: the disc search failed: " << error.what() << "\n";
    }
    _isSearching = false;
}

bool ZPKCDSearchWindowController::volumeHoldsDisc(const std::string& volume) const {
    std::vector<std::string> files;
    for (const std::string& searchPath : _searchPaths) {
        if (!isPattern(searchPath)) {
            if (CZPKUtil::IsFileExist(ZPKPath::join(volume, searchPath))) {
                return true;
            }
            continue;
        }
        if (files.empty()) {
            CZPKUtil::GetFilePathList(volume, &files);
        }
        if (anyMatches(fullPattern(volume, searchPath), files)) {
            return true;
        }
    }
    return false;
}
