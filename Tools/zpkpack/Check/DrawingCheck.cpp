// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/DrawingCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "Tools/zpkpack/Check/DrawingSize.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

/// An icon has some hundred; what is drawn of so many still takes no time to speak of.
constexpr std::size_t kMostElements = 10000;

/// Of the longer side. What a drawing program leaves by its rounding is no other shape.
constexpr double kSquareEnough = 0.01;

constexpr std::array<std::string_view, 2> kTexts = {"text", "textArea"};
constexpr std::array<std::string_view, 5> kMoves = {"animate", "animateColor", "animateMotion",
                                                    "animateTransform", "set"};
constexpr std::array<std::string_view, 7> kLeftOut = {"clipPath", "mask",   "filter",       "pattern",
                                                      "marker",   "symbol", "foreignObject"};
constexpr std::array<std::string_view, 4> kReferring = {"use", "image", "linearGradient", "radialGradient"};

template <std::size_t Size>
bool isAmong(const std::array<std::string_view, Size>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Drawing programs give SVG's names prefixes of all kinds.
std::string localName(const std::string& name) {
    return name.substr(name.find(':') + 1);
}

}  // namespace

void DrawingCheck::run(const std::string& bytes) {
    CExpatTreeBuilder builder(nullptr, bytes.size());
    builder.SetElementListener(
        [this](const CXMLElement& element, const Place& place) { visit(element, place); });
    if (!builder.Parse(bytes.data(), static_cast<int>(bytes.size()), true)) {
        const CExpatTreeBuilder::Refusal refusal = builder.GetRefusal();
        report("icon", "it is no drawing: " + refusal.reason, refusal.place);
    }
}

void DrawingCheck::visit(const CXMLElement& element, const Place& place) {
    const std::string name = localName(element.GetNameString());
    if (++m_elements == 1) {
        visitRoot(element, place);
    } else if (m_elements == kMostElements + 1) {
        report("icon", "it has more than " + std::to_string(kMostElements) + " elements", place);
    }
    if (isAmong(kTexts, name)) {
        reportOnce("icon", name, "text looks otherwise on every machine; turn it into paths", place);
    } else if (isAmong(kMoves, name)) {
        reportOnce("icon", name, "\"" + name + "\" moves something, and a picture stands still", place);
    } else if (isAmong(kLeftOut, name)) {
        reportOnce("icon-drawing", name, "\"" + name + "\" is left out", place);
    }
    for (CXMLNode* const attribute : element.GetAttributes()) {
        if (isAmong(kReferring, name) && localName(attribute->GetNameString()) == "href") {
            visitReference(name, attribute->GetStringValueString(), place);
        }
    }
}

void DrawingCheck::visitRoot(const CXMLElement& element, const Place& place) {
    if (localName(element.GetNameString()) != "svg") {
        report("icon", "it is no drawing: it begins with \"" + element.GetNameString() + "\"", place);
        return;
    }
    const DrawingSize size = DrawingSize::of(element);
    const double longer = std::max(size.width, size.height);
    if (longer == 0) {
        report("icon", "it has no size; give it a viewBox", place);
    } else if (std::abs(size.width - size.height) > kSquareEnough * longer) {
        report("icon-shape", "it is " + size.text(), place);
    }
}

void DrawingCheck::visitReference(const std::string& name, const std::string& target, const Place& place) {
    if (!target.starts_with('#') && !(name == "image" && target.starts_with("data:image/png;base64,"))) {
        report("icon", "\"" + name + "\" refers to something that is not drawn with it", place);
    }
}

void DrawingCheck::reportOnce(const char* check, const std::string& name, const std::string& text,
                              const Place& place) {
    if (m_reported.insert(name).second) {
        report(check, text, place);
    }
}

void DrawingCheck::report(const char* check, const std::string& text, const Place& place) {
    m_findings.add(check, m_path, text, {place.line, place.column});
}

}  // namespace zpk_packager
