// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

namespace {

constexpr std::chrono::milliseconds kBetweenBars{100};
constexpr std::chrono::milliseconds kBetweenLines{1000};

}  // namespace

void Progress::begin(const std::string& what, std::uint64_t whole, const std::string& things) {
    const ZPKMutexLock lock(m_mutex);
    m_text = {what, 0, whole, {}, things};
    m_begin = m_clock();
    // Lines of several short pieces of work do not come faster than those of one.
    if (m_surface.progressKind() == ProgressSurface::Kind::InPlace || m_lastShown == TimePoint()) {
        m_lastShown = m_begin;
    }
}

void Progress::advance(std::uint64_t count) {
    const ZPKMutexLock lock(m_mutex);
    m_text.done += count;
    const ProgressSurface::Kind kind = m_surface.progressKind();
    if (kind == ProgressSurface::Kind::None) {
        return;
    }
    const TimePoint now = m_clock();
    if (now - m_lastShown >= (kind == ProgressSurface::Kind::Lines ? kBetweenLines : kBetweenBars)) {
        show(now);
    }
}

void Progress::show(TimePoint now) {
    m_lastShown = now;
    m_text.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_begin);
    if (m_surface.progressKind() == ProgressSurface::Kind::Lines) {
        m_surface.addLine(m_text.line());
    } else {
        m_surface.showInPlace(m_text.bar(m_surface.columns(), m_surface.isProgressColoured()));
    }
}

void Progress::end() {
    const ZPKMutexLock lock(m_mutex);
    if (m_surface.progressKind() == ProgressSurface::Kind::InPlace) {
        m_surface.showInPlace("");
    }
}

}  // namespace zpk_packager
