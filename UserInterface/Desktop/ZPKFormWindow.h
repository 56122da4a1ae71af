// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDialog>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>

/// The window that a form's root becomes: modal for the application, of a size that fits its
/// contents and the screen, and never closed by itself. Main thread only.
class ZPKFormWindow : public QObject {
public:
    enum class Size { Fixed, Adjustable };

    /// `characters`: so many of the font's characters the window is wide, where the screen has the room.
    ZPKFormWindow(std::unique_ptr<QDialog> root, Size size, int characters);

    QDialog& widget() const { return *m_root; }

    /// Shows the window in front of the others, with the keyboard. Over another window it waits a moment:
    /// what is over by then would only flash.
    void bringToFront();

    /// The same without the wait.
    void bringToFrontAtOnce();

    /// The work that the window is shown for begins.
    virtual void workBegins() {}

protected:
    void centerOnScreen();
    void setWindowTitle(const std::string& title);
    void takeOffScreen();

    /// Gives the window the size that its contents need.
    void fitContents();

    /// Around the question for the window's height: the layout has the width that it will have, and then has
    /// told how high it would be.
    virtual void prepareHeight() {}
    virtual void heightTold() {}

    /// A person used the close box, or pressed Escape.
    virtual void closeBoxUsed() {}
    virtual void escapePressed() {}

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void placeAboveModalWindow();
    void holdHeightUntilShown();
    QSize sizeOfContents();

    std::unique_ptr<QDialog> m_root;
    const Size m_size;
    const int m_characters;
    QTimer m_appearance;
    /// Gives back the height that is held, once the window is there.
    std::function<void()> m_release;
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
