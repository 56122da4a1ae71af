// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace zpk_packager {

/// How far a work has come, in words.
struct ProgressText {
    /// What is done, in ASCII.
    std::string what;
    /// In bytes, or in `things`; no more than the whole counts.
    std::uint64_t done = 0;
    std::uint64_t whole = 0;
    /// Since the work began.
    std::chrono::milliseconds elapsed{0};
    /// What is counted in the place of bytes, in ASCII.
    std::string things = {};

    /// "packing: 45 % of 1.2 GB, 120.0 MB/s, 0:12 left"; rate and time only once they can be told. "drawing:
    /// 50 % of 16 languages, 0:04 left" of other things.
    std::string line() const;

    /// The same with a bar, in fewer than `columns` columns: on a narrow terminal the bar goes first, then
    /// whatever does not fit.
    std::string bar(std::size_t columns, bool isColoured) const;

private:
    std::uint64_t percent() const;
    /// In a second; 0 while it is not known.
    double rate() const;
    std::string rateAndTimeLeft() const;
};

}  // namespace zpk_packager
