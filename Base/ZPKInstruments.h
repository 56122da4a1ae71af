// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

/// What a build puts into programs beside their own code: sanitizers, the counting of lines that ran.
class ZPKInstruments {
public:
    ZPKInstruments() = delete;

    /// Whether there are any. They look at processes and open files of their own, which no cage allows.
    static bool areThere();
};
