// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

/// A progress bar. Main thread only.
class ZPKProgressIndicator {
public:
    virtual ~ZPKProgressIndicator() = default;

    virtual void setMinValue(double value) = 0;
    virtual void setMaxValue(double value) = 0;
    virtual void setDoubleValue(double value) = 0;
    virtual void setIndeterminate(bool indeterminate) = 0;
    virtual void setUsesThreadedAnimation(bool threaded) = 0;
    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;

    /// Marks the bar for redrawing.
    virtual void setNeedsDisplay() = 0;
};
