// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CPlusUtil.h"

#include <cerrno>

namespace varno_zpk {

const char* g_CPlusUtil_File = nullptr;
unsigned int g_CPlusUtil_Line = 0;

int fopen_s(std::FILE** file, const char* path, const char* mode) {
    *file = std::fopen(path, mode);
    return *file != nullptr ? 0 : errno;
}

}  // namespace varno_zpk
