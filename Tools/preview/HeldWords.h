// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/ZPKFileDescriptor.h"

/// Keeps what the launcher's parts and the toolkit write to the standard streams: a line for each text that
/// is looked up, for instance. Only what keeps windows from being shown is of interest. Main thread only,
/// once in a process.
class HeldWords {
public:
    HeldWords();

    /// Writes to the standard error of before why there are no pictures: what was said of a form that cannot
    /// be loaded, else `reason`.
    void tell(const std::string& reason) const;

private:
    std::string complaint() const;

    ZPKFileDescriptor m_standardError;
    ZPKFileDescriptor m_words;
};
