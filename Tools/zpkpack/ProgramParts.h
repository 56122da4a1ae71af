// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace zpk_packager {

/// What belongs to the packager and lies outside of it: the launcher template, and the programs that it runs
/// or copies.
class ProgramParts {
public:
    ProgramParts() = delete;

    /// Where the part of this name is: beside this program, as in the folder of a build, or where it is
    /// installed, told from where this program is, so that the whole may be moved.
    static std::string path(const std::string& name);

    static std::string launcherTemplate() { return path("Zephyrkit.app"); }
    static std::string runProgram() { return path("zephyrkit-run"); }
    static std::string previewProgram() { return path("zephyrkit-preview"); }
    static std::string drawProgram() { return path("zephyrkit-draw"); }
};

}  // namespace zpk_packager
