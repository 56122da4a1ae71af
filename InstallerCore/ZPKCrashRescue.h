// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

/// While it lives, a crash of this process is not its end: the process becomes the launcher's first stage
/// once more, which this time stays on the terminal. For the time in which the toolkit is opened and nothing
/// is done yet; what is damaged in a carried library shows then, and in no other way. Main thread only, one
/// at a time.
class ZPKCrashRescue {
public:
    /// `program` is the first stage.
    ZPKCrashRescue(std::string program, int argc, char** argv);
    ~ZPKCrashRescue() { end(); }
    ZPKCrashRescue(const ZPKCrashRescue&) = delete;
    ZPKCrashRescue& operator=(const ZPKCrashRescue&) = delete;

    /// Does at once what it does at a crash, with a line that says why there are no windows. Comes back only
    /// where none of these lives, or the process cannot become the first stage. Any thread.
    static void giveUp(std::string_view reason);

    /// From now on a crash is one, until the next of these. For a run that begins while one lives.
    static void end();

    /// True in a first stage that such a process has become.
    static bool wasCalled(int argc, char** argv);

private:
    std::string m_program;
    std::string m_name;
    std::vector<char*> m_arguments;
};
