// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QApplication>
#include <QObject>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "UserInterface/ZPKDesktopPlugIn.h"

/// The toolkit's application object with what it needs for its whole life. Its thread is the main
/// thread. Making it may end the process, see `ZPKDesktopParameters::runWithoutDesktop`.
class ZPKDesktopApplication {
public:
    explicit ZPKDesktopApplication(const ZPKDesktopParameters& parameters);

    /// Has `action` run by the main thread's event loop. Any thread.
    void postToMainThread(std::function<void()> action);

    /// The text direction and the digits of that language. No text of the toolkit's own is ever shown.
    void setLanguage(const std::string& code);

private:
    std::string m_identifier;
    std::vector<char*> m_arguments;
    int m_argumentCount;
    std::unique_ptr<QApplication> m_application;
    QObject m_receiver;
};
