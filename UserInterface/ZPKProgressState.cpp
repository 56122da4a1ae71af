// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKProgressState.h"

#include <algorithm>
#include <cmath>
#include <utility>

ZPKProgressState::ZPKProgressState(std::function<void()> show) : m_show(std::move(show)) {}

std::optional<int> ZPKProgressState::percent() const {
    if (m_indeterminate || !m_value) {
        return std::nullopt;
    }
    const double share = (*m_value - m_minValue) / (m_maxValue - m_minValue);
    if (!std::isfinite(share)) {
        return std::nullopt;
    }
    return static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * 100.0));
}

void ZPKProgressState::setDoubleValue(double value) {
    m_value = value;
    m_show();
}

void ZPKProgressState::setIndeterminate(bool indeterminate) {
    m_indeterminate = indeterminate;
    m_show();
}

void ZPKProgressState::setAnimating(bool animating) {
    m_animating = animating;
    m_show();
}
