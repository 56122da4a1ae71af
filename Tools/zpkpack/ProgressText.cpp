// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ProgressText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Base/ZPKDurationText.h"

namespace zpk_packager {

namespace {

/// Before that, a rate says nothing.
constexpr std::chrono::milliseconds kFirstRate{500};
constexpr std::uint64_t kThousand = 1000;
/// Things a second, of which a time can be told.
constexpr double kSlowest = 0.001;
constexpr std::size_t kShortestBar = 10;
constexpr std::size_t kLongestBar = 40;
constexpr const char* kColour = "\x1b[36m";
constexpr const char* kNoColour = "\x1b[0m";

std::string amount(std::uint64_t bytes) {
    constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
    if (bytes < kThousand) {
        return std::to_string(bytes) + " bytes";
    }
    double number = static_cast<double>(bytes) / kThousand;
    const char* const* unit = kUnits;
    // What would be rounded to a thousand is one of the next unit.
    while (number >= 999.95 && unit != std::end(kUnits) - 1) {
        number /= kThousand;
        ++unit;
    }
    char text[64];
    std::snprintf(text, sizeof text, "%.1f %s", number, *unit);
    return text;
}

}  // namespace

std::uint64_t ProgressText::percent() const {
    return whole == 0 ? 100
                      : static_cast<std::uint64_t>(100.0 * static_cast<double>(std::min(done, whole)) /
                                                   static_cast<double>(whole));
}

double ProgressText::rate() const {
    return elapsed < kFirstRate
               ? 0
               : static_cast<double>(done) * kThousand / static_cast<double>(elapsed.count());
}

std::string ProgressText::rateAndTimeLeft() const {
    const double speed = rate();
    if (speed < (things.empty() ? 1 : kSlowest)) {
        return "";
    }
    const double left = std::ceil(static_cast<double>(whole - std::min(done, whole)) / speed);
    const std::string shown = things.empty() ? ", " + amount(static_cast<std::uint64_t>(speed)) + "/s" : "";
    return shown + ", " + ZPKDurationText(std::chrono::seconds(static_cast<std::uint64_t>(left))) + " left";
}

std::string ProgressText::line() const {
    return what + ": " + std::to_string(percent()) + " % of " +
           (things.empty() ? amount(whole) : std::to_string(whole) + " " + things) + rateAndTimeLeft();
}

std::string ProgressText::bar(std::size_t columns, bool isColoured) const {
    // The last column stays empty: some terminals go on to the next line with it.
    const std::size_t room = std::max<std::size_t>(columns, 1) - 1;
    const std::string text = line();
    if (text.size() + kShortestBar + 3 > room) {
        return text.substr(0, room);
    }
    const std::size_t length = std::min(room - text.size() - 3, kLongestBar);
    const auto filled = static_cast<std::size_t>(length * percent() / 100);
    const std::string full(filled, '#');
    return "[" + (isColoured ? kColour + full + kNoColour : full) + std::string(length - filled, '.') + "] " +
           text;
}

}  // namespace zpk_packager
