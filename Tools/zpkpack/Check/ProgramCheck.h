// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

#include "Base/ZPKFailure.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/ProgramFile.h"

namespace zpk_packager {

/// Looks at whether a setup program can be started on a plain machine: one of the packager's own kind of
/// processor, with the C and C++ libraries and a shell and nothing else.
class ProgramCheck {
public:
    explicit ProgramCheck(FindingList& findings) : m_findings(findings) {}

    /// Whether the payload brings a file; the path begins with the program's folder, and may climb.
    using Carried = std::function<bool(const std::string& path)>;

    /// `program` is an executable regular file in the payload folder.
    void run(const std::string& program, const std::string& dataFolder);

    /// The same of a file that may lie elsewhere than at `path`, where the payload has it.
    void look(const std::string& path, const ZPKResult<ProgramFile>& program, const Carried& isCarried);

private:
    void checkMachine(const std::string& path, const ProgramFile& program, const Carried& isCarried);
    void checkLibraries(const std::string& path, const ProgramFile& program, const Carried& isCarried);
    void checkScript(const std::string& path, const ProgramFile& program);

    FindingList& m_findings;
};

}  // namespace zpk_packager
