// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Base/ZPKFailure.h"

namespace zpk_packager {

/// What a program file asks of the machine that it is started on.
class ProgramFile {
public:
    enum class Kind { Machine, Script, Other };

    /// Reads the headers of the regular file at `path`, and nothing that they do not name. Fails when it
    /// cannot be read, or says that it is machine code and is damaged.
    static ZPKResult<ProgramFile> read(const std::string& path);

    /// The same of a file that is open for reading; `name` is what a failure names.
    static ZPKResult<ProgramFile> read(int descriptor, const std::string& name);

    Kind kind() const { return m_kind; }

    /// The loader of machine code, or the interpreter of a script; empty where none is named.
    const std::string& interpreter() const { return m_interpreter; }

    /// Of machine code: the number of its processor, its width in bits, the libraries that it needs and the
    /// folders in which it looks for them first, as they are written.
    unsigned int processor() const { return m_processor; }
    unsigned int bits() const { return m_bits; }
    const std::vector<std::string>& libraries() const { return m_libraries; }
    const std::vector<std::string>& libraryFolders() const { return m_libraryFolders; }

private:
    friend class ProgramFileReader;

    Kind m_kind = Kind::Other;
    std::string m_interpreter;
    unsigned int m_processor = 0;
    unsigned int m_bits = 0;
    std::vector<std::string> m_libraries;
    std::vector<std::string> m_libraryFolders;
};

}  // namespace zpk_packager
