// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QImage>
#include <QWidget>
#include <string>

/// Writes pictures of windows, each with a plain frame that bears its title, into one folder. Failures are
/// thrown as `std::runtime_error`. Main thread only.
class PictureWriter {
public:
    explicit PictureWriter(std::string folder) : m_folder(std::move(folder)) {}

    /// The window as it is on the screen now, in `<folder>/<name>.png`, which is not there yet.
    void writeWindow(QWidget& window, const std::string& name) const;

    /// The same for a menu, which has no frame of its own.
    void writeMenu(QWidget& menu, const std::string& name) const;

private:
    void write(const QImage& image, const std::string& name) const;

    std::string m_folder;
};
