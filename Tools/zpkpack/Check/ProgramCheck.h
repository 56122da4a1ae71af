// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

class ProgramFile;

/// Looks at whether a setup program can be started on a plain machine: one of the packager's own kind of
/// processor, with the C and C++ libraries and a shell and nothing else.
class ProgramCheck {
public:
    explicit ProgramCheck(FindingList& findings) : m_findings(findings) {}

    /// `program` is an executable regular file in the payload folder.
    void run(const std::string& program, const std::string& dataFolder);

private:
    void checkMachine(const std::string& path, const ProgramFile& program);
    void checkLibraries(const std::string& path, const ProgramFile& program);
    void checkScript(const std::string& path, const ProgramFile& program);

    FindingList& m_findings;
};

}  // namespace zpk_packager
