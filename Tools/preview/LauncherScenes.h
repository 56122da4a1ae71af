// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "Base/ZPKClock.h"
#include "InstallerCore/ZPKCore.h"
#include "Tools/preview/PictureWriter.h"
#include "UserInterface/ZPKFrontEnd.h"
#include "UserInterface/ZPKRemovableVolumes.h"

/// Has a front end show, one after the other, everything that a launcher can show, and each time a picture
/// taken of it: the languages and the menu are set up by the launch sequence itself, the windows are filled
/// by their own controllers. Main thread only.
class LauncherScenes : public ZPKApplicationDelegate {
public:
    /// All but `products`, the names that a package lists, outlive the object.
    LauncherScenes(ZPKFrontEnd& frontEnd, const PictureWriter& pictures, std::vector<std::string> products);

    void awakeFromNib() override { m_core.awakeFromNib(); }
    void applicationWillFinishLaunching() override {}

    /// Shows it all and terminates. A failure is kept for `failure`.
    void applicationDidFinishLaunching() override;

    /// Why not all pictures were made; empty when they were.
    const std::string& failure() const { return m_failure; }

private:
    enum class Keys { AsItOpens, InTheList };

    void showAll();
    void showProgress();
    void showSearching();
    void showDiscWindow(const std::vector<std::string>& products, const std::string& name,
                        Keys keys = Keys::AsItOpens);
    void showMenu();
    void showAlert(const std::string& text, const std::string& name);

    /// Takes the picture of what `show` shows, and closes it, where `show` returns only then.
    void takeWhile(const std::string& name, const std::function<void()>& show);

    ZPKFrontEnd& m_frontEnd;
    const PictureWriter& m_pictures;
    const std::vector<std::string> m_products;
    ZPKRemovableVolumes m_volumes;
    ZPKSystemClock m_clock;
    ZPKCore m_core;
    std::string m_failure;
};
