// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>

#include "Base/ZPKFailure.h"

class ZPKFileHandle;

/// What a program file says of itself to the kernel: which kind it is, and which other program it needs in
/// order to run. May be called from any thread.
class ZPKProgramHeader {
public:
    enum class Kind { Empty, Script, Machine, Other };

    /// Reads the beginning of the file, and of a machine program what that points to; never more than some
    /// ten kilobytes, whatever the file says. Fails where it cannot be read.
    static ZPKResult<ZPKProgramHeader> ofFile(const std::string& path);

    Kind kind() const { return m_kind; }

    /// Path of the interpreter of a script, or of the loader of a program for this machine's order of bytes;
    /// empty where none is named, or not in a way that the kernel takes.
    const std::string& helper() const { return m_helper; }

    /// The processor that a machine program is made for, such as "AArch64".
    std::string processor() const;

    /// True for a machine program that is made for the processor on which this one runs.
    bool isForThisProcessor() const;

private:
    explicit ZPKProgramHeader(const ZPKFileHandle& file);

    void readMachineProgram(const ZPKFileHandle& file, const std::string& start);

    Kind m_kind = Kind::Other;
    std::string m_helper;
    std::uint16_t m_machine = 0;
    bool m_has64Bits = false;
};
