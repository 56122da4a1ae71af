// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QWidget>
#include <memory>
#include <string>

/// The window that a form's root becomes: modal for the application, of a size that fits its
/// contents and the screen, and never closed by itself. Main thread only.
class ZPKFormWindow : public QObject {
public:
    enum class Size { Fixed, Adjustable };

    ZPKFormWindow(std::unique_ptr<QWidget> root, Size size);

    QWidget& widget() const { return *m_root; }

    /// Shows the window in front of the others, with the keyboard.
    void bringToFront();

protected:
    void centerOnScreen();
    void setWindowTitle(const std::string& title);
    void takeOffScreen();

    /// Gives the window the size that its contents need.
    void fitContents();

    /// A person used the close box, or pressed Escape.
    virtual void closeBoxUsed() {}
    virtual void escapePressed() {}

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void placeAboveModalWindow();

    std::unique_ptr<QWidget> m_root;
    const Size m_size;
    bool m_centered = false;
};

/// `Interface` with the operations of every window, done by a form's window.
template <class Interface>
class ZPKDesktopWindow : public Interface, public ZPKFormWindow {
public:
    using ZPKFormWindow::ZPKFormWindow;

    void center() override { centerOnScreen(); }
    void setTitle(const std::string& title) override { setWindowTitle(title); }
    void makeKeyAndOrderFront() override { bringToFront(); }
    void close() override { takeOffScreen(); }
};
