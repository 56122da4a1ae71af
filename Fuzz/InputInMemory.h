// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_fuzz {

/// A file that lies in memory alone and holds the input of a run, for what reads files by their path.
class InputInMemory {
public:
    InputInMemory();

    /// The file then holds these bytes and no others; gives its path.
    const std::string& hold(const void* bytes, std::size_t size);

private:
    ZPKFileDescriptor m_file;
    std::string m_path;
};

}  // namespace zpk_fuzz
