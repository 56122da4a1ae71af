// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

namespace varno_zpk {

/// Forbids copying of the classes that derive from it.
class CNonCopyable {
protected:
    CNonCopyable() = default;
    ~CNonCopyable() = default;

private:
    // Declared and never defined: a copy fails at compile time, or at link time from inside.
    CNonCopyable(const CNonCopyable&);
    CNonCopyable& operator=(const CNonCopyable&);
};

}  // namespace varno_zpk
