// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <optional>

#include "UserInterface/ZPKProgressIndicator.h"

/// What a progress bar was told, and what it has to show by that; drawing it is the front end's part.
/// Main thread only.
class ZPKProgressState final : public ZPKProgressIndicator {
public:
    /// `show` is called when there may be something else to show. A new range alone does not count:
    /// it shows with the next value.
    explicit ZPKProgressState(std::function<void()> show);

    /// How far it is, from 0 to 100; nothing while nobody can tell, since there is no value yet, no
    /// range, or no end to be seen.
    std::optional<int> percent() const;

    bool isIndeterminate() const { return m_indeterminate; }

    /// True while the bar is to move without an end.
    bool isEndless() const { return m_indeterminate && m_animating; }

    void setMinValue(double value) override { m_minValue = value; }
    void setMaxValue(double value) override { m_maxValue = value; }
    void setDoubleValue(double value) override;
    void setIndeterminate(bool indeterminate) override;
    void setUsesThreadedAnimation(bool) override {}
    void startAnimation() override { setAnimating(true); }
    void stopAnimation() override { setAnimating(false); }
    void setNeedsDisplay() override { m_show(); }

private:
    void setAnimating(bool animating);

    const std::function<void()> m_show;
    double m_minValue = 0;
    double m_maxValue = 100;
    std::optional<double> m_value;
    bool m_indeterminate = false;
    bool m_animating = false;
};
