// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

#include "Base/ZPKMutex.h"
#include "Tools/zpkpack/ProgressSurface.h"

namespace zpk_packager {

/// What the program says: results on standard output, messages on standard error, each message one
/// harmless line; and, below the messages of a terminal, the progress of the work. Results and settings are
/// for one thread, messages and progress for any.
class Console final : public ProgressSurface {
public:
    enum class Detail {
        /// Errors alone.
        Quiet,
        Usual,
        /// Also what is only of interest to somebody who looks for a cause.
        Verbose,
    };

    enum class Stream { Results, Messages };

    Console() = default;
    /// Results that were not written by `finish` are lost.
    ~Console() override = default;
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void setDetail(Detail detail) { m_detail = detail; }
    Detail detail() const { return m_detail; }

    /// Gives out a piece of the result as it is; who gives it has made it harmless. Throws
    /// `PackagerFailure` when standard output cannot be written.
    void result(std::string_view text);

    /// The same for a line, which may hold any bytes.
    void resultLine(std::string_view text);

    /// Why the work could not be done.
    void error(std::string_view text) ZPK_EXCLUDES(m_mutex);

    /// What is worth knowing of work that goes well.
    void note(std::string_view text) ZPK_EXCLUDES(m_mutex);

    /// What is only shown when somebody wants to know all.
    void more(std::string_view text) ZPK_EXCLUDES(m_mutex);

    /// Writes the results that are still kept. Throws `PackagerFailure`.
    void finish();

    /// Whether results stand between the messages of a terminal.
    static bool areResultsOnATerminal();

    /// Whether what is written there may be coloured: by a terminal that can, for a person who has not
    /// said no by `NO_COLOR`.
    static bool isColoured(Stream stream);

    /// In place where messages go to a terminal that can write in place.
    Kind progressKind() const override;
    std::size_t columns() const override;
    bool isProgressColoured() const override { return isColoured(Stream::Messages); }
    void showInPlace(std::string_view text) override ZPK_EXCLUDES(m_mutex);
    void addLine(std::string_view text) override { note(text); }

private:
    void message(std::string_view text) ZPK_EXCLUDES(m_mutex);

    Detail m_detail = Detail::Usual;
    std::string m_results;
    ZPKMutex m_mutex;
    /// What stands in the terminal's line of progress.
    std::string m_inPlace ZPK_GUARDED_BY(m_mutex);
};

}  // namespace zpk_packager
