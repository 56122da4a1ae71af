// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>

namespace zpk_packager {

/// Where the progress of a long work is shown. Texts are harmless lines without their ends. May be used from
/// any thread.
class ProgressSurface {
public:
    enum class Kind {
        /// Nobody wants to see any.
        None,
        /// Lines that stay, as in a log.
        Lines,
        /// One line of a terminal, written again and again.
        InPlace,
    };

    /// Back to the start of a terminal's line, and away with what stands there.
    static constexpr const char* kWipe = "\r\x1b[K";

    virtual ~ProgressSurface() = default;

    virtual Kind progressKind() const = 0;

    /// Columns of the terminal as it is now.
    virtual std::size_t columns() const = 0;

    virtual bool isProgressColoured() const = 0;

    /// Writes `text` in the place of the last one; an empty one takes that away.
    virtual void showInPlace(std::string_view text) = 0;

    virtual void addLine(std::string_view text) = 0;
};

}  // namespace zpk_packager
