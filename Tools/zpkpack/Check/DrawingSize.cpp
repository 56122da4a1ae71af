// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/DrawingSize.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <sstream>
#include <string_view>
#include <vector>

using namespace varno_zpk;

namespace zpk_packager {

namespace {

constexpr std::string_view kSeparators = " \t\r\n,";
constexpr std::array<std::string_view, 7> kUnits = {"", "px", "pt", "pc", "mm", "cm", "in"};

std::string_view attribute(const CXMLElement& element, std::string_view name) {
    for (CXMLNode* const each : element.GetAttributes()) {
        if (each->GetNameString() == name) {
            return each->GetStringValueString();
        }
    }
    return {};
}

/// Takes the number at the start of `rest` away; 0 where there is none.
double takeNumber(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kSeparators), rest.size()));
    double number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    return error == std::errc() && std::isfinite(number) ? number : 0;
}

/// Sides that are there and nothing else.
DrawingSize ofSides(double width, double height) {
    return width > 0 && height > 0 ? DrawingSize{width, height} : DrawingSize{};
}

/// A length that depends on nothing else; 0 where it is another.
double length(std::string_view text) {
    const double number = takeNumber(text);
    const std::string_view unit = text.substr(0, text.find_last_not_of(kSeparators) + 1);
    return std::find(kUnits.begin(), kUnits.end(), unit) != kUnits.end() ? number : 0;
}

}  // namespace

DrawingSize DrawingSize::of(const CXMLElement& root) {
    std::string_view box = attribute(root, "viewBox");
    takeNumber(box);
    takeNumber(box);
    const double width = takeNumber(box);
    const DrawingSize ofBox = ofSides(width, takeNumber(box));
    return ofBox.width > 0 ? ofBox
                           : ofSides(length(attribute(root, "width")), length(attribute(root, "height")));
}

std::string DrawingSize::text() const {
    std::ostringstream text;
    text << width << " by " << height;
    return text.str();
}

}  // namespace zpk_packager
