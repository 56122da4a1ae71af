// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKProgressLine.h"

#include <algorithm>

#include "Base/ZPKDurationText.h"
#include "UserInterface/Terminal/ZPKPercentText.h"
#include "UserInterface/Terminal/ZPKTextColumns.h"

namespace {

constexpr const char* kGap = "  ";

constexpr std::size_t kShortestBar = 5;
constexpr std::size_t kLongestBar = 30;

/// Without an end this many marks move along the bar.
constexpr std::size_t kMovingMarks = 3;

/// As wide for every percentage, so that what stands behind it stands still.
std::string percentText(int percent, const std::string& language) {
    const std::string text = ZPKPercentText::of(percent, language);
    const std::size_t widest = ZPKTextColumns::of(ZPKPercentText::of(100, language));
    return std::string(widest - std::min(widest, ZPKTextColumns::of(text)), ' ') + text;
}

std::string bar(const ZPKProgressLine& line, std::size_t cells) {
    std::string marks(cells, '.');
    if (line.percent) {
        std::fill_n(marks.begin(), cells * static_cast<std::size_t>(*line.percent) / 100, '#');
    } else {
        const std::size_t places = cells - kMovingMarks + 1;
        marks.replace(static_cast<std::size_t>(line.elapsed.count()) % places, kMovingMarks, kMovingMarks,
                      '#');
    }
    return "[" + marks + "]";
}

}  // namespace

std::string ZPKProgressLine::withoutTitle(std::size_t columns) const {
    const std::string time = ZPKPercentText::digits(ZPKDurationText(elapsed), language);
    const std::string value = percent ? percentText(*percent, language) : "";
    const std::string numbers = value + (percent ? kGap : "") + time;
    const std::size_t cells = std::clamp(columns / 4, kShortestBar, kLongestBar);
    for (const std::string& text :
         {bar(*this, cells) + kGap + numbers, bar(*this, kShortestBar) + kGap + numbers, numbers,
          percent ? value : time}) {
        if (ZPKTextColumns::of(text) <= columns) {
            return text;
        }
    }
    return {};
}

std::optional<std::string> ZPKProgressLine::whole(std::size_t columns) const {
    const std::string line = withoutTitle(columns) + kGap + title;
    return ZPKTextColumns::of(line) <= columns ? std::optional(line) : std::nullopt;
}
