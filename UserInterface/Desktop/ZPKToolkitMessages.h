// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// What becomes of the toolkit's own messages: warnings are lines on standard error, lesser ones are
/// left out, and a fatal one ends the process instead of aborting it.
class ZPKToolkitMessages {
public:
    /// Takes over the messages while the toolkit starts, when its complaints are about its
    /// surroundings and nobody's concern: they are left out. A fatal one means that the toolkit can
    /// show nothing and would abort. Since it must not be returned to, `runWithoutDesktop` then does
    /// the whole run, and the process ends with what that gives. After the object's life a fatal
    /// message ends the process with status 1 through `exit`.
    class Start {
    public:
        explicit Start(int (*runWithoutDesktop)());
        ~Start();
        Start(const Start&) = delete;
        Start& operator=(const Start&) = delete;
    };

    /// Keeps the messages of its time from standard error. Not nested.
    class Held {
    public:
        Held();
        ~Held();
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;

        /// The last message that was held, empty without one.
        QString last() const;
    };
};
