// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The beginning of a program's file: a bounded part of it is read, whatever it says.

#include <climits>
#include <cstddef>
#include <cstdint>

#include "Fuzz/InputInMemory.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"
#include "Platform/ZPKLoadableFile.h"
#include "Platform/ZPKProgramHeader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static zpk_fuzz::InputInMemory file;
    const std::string& path = file.hold(data, size);
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(0, 0));
    const ZPKResult<ZPKProgramHeader> header = ZPKProgramHeader::ofFile(path);
    zpk_fuzz::require(static_cast<bool>(header), "a file that can be read fails");
    zpk_fuzz::require(header->helper().size() <= PATH_MAX, "a path beyond the bound");
    static_cast<void>(header->processor());
    static_cast<void>(header->isForThisProcessor());
    ZPKLoadableFile::check(path).ignore();
    return 0;
}
