// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Fuzz/InputInMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include "Base/ZPKDescriptorIO.h"
#include "Fuzz/Require.h"

namespace zpk_fuzz {

InputInMemory::InputInMemory()
    : m_file(::memfd_create("input", MFD_CLOEXEC)), m_path("/proc/self/fd/" + std::to_string(m_file.get())) {}

const std::string& InputInMemory::hold(const void* bytes, std::size_t size) {
    require(::ftruncate(m_file.get(), 0) == 0, "the input cannot be put down");
    require(ZPKDescriptorIO::writeWholeAt(m_file.get(), bytes, size, 0), "the input cannot be put down");
    return m_path;
}

}  // namespace zpk_fuzz
