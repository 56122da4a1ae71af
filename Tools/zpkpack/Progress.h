// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "Base/ZPKMutex.h"
#include "Tools/zpkpack/ProgressSurface.h"
#include "Tools/zpkpack/ProgressText.h"

namespace zpk_packager {

/// Shows how far a long work has come: on a terminal one bar that is written in place, elsewhere at most one
/// line a second, the first after a second. Any thread.
class Progress {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Clock = std::function<TimePoint()>;

    /// `surface` outlives the object.
    explicit Progress(ProgressSurface& surface, Clock clock = std::chrono::steady_clock::now)
        : m_surface(surface), m_clock(std::move(clock)) {}
    ~Progress() { end(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Whether anybody sees it, so that the size of the whole is worth finding out.
    bool isShown() const { return m_surface.progressKind() != ProgressSurface::Kind::None; }

    /// A piece of work begins, of `whole` bytes, or of as many `things`; the one before is over.
    void begin(const std::string& what, std::uint64_t whole, const std::string& things = "")
        ZPK_EXCLUDES(m_mutex);

    /// That many more of them are done.
    void advance(std::uint64_t count) ZPK_EXCLUDES(m_mutex);

    /// Takes the bar away, also one that a child process has left.
    void end() ZPK_EXCLUDES(m_mutex);

    /// `advance`, for those who count and know nothing of progress.
    std::function<void(std::uint64_t)> counter() {
        return [this](std::uint64_t bytes) { advance(bytes); };
    }

    /// Ends the progress, if there is one, with a stretch of code, however that is left.
    class Scope {
    public:
        explicit Scope(Progress* progress) : m_progress(progress) {}
        ~Scope() {
            if (m_progress != nullptr) {
                m_progress->end();
            }
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Progress* m_progress;
    };

private:
    void show(TimePoint now) ZPK_REQUIRES(m_mutex);

    ProgressSurface& m_surface;
    const Clock m_clock;
    ZPKMutex m_mutex;
    ProgressText m_text ZPK_GUARDED_BY(m_mutex);
    TimePoint m_begin ZPK_GUARDED_BY(m_mutex);
    TimePoint m_lastShown ZPK_GUARDED_BY(m_mutex);
};

}  // namespace zpk_packager
