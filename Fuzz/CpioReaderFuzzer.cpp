// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The reader of CPIO archives on plain bytes: whatever they are, it ends, gives of each member as many bytes
// as that one announces or fails, and keeps nothing in memory that they announce.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

#include "Archive/CpioReader.h"
#include "Archive/CpioWriter.h"
#include "Archive/Failure.h"
#include "Archive/InputFile.h"
#include "Archive/PlainStream.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"

namespace {

using namespace zpk_archive;
using zpk_fuzz::require;

/// The stream's blocks, and the longest name and link.
constexpr std::size_t kMost = std::size_t{8} << 20;

void readAll(CpioReader& reader) {
    while (const std::optional<Member> member = reader.next()) {
        require(member->name.size() <= CpioWriter::kNameLimit + 1, "a name beyond the bound");
        std::size_t got = 0;
        for (auto bytes = reader.nextData(); !bytes.empty(); bytes = reader.nextData()) {
            got += bytes.size();
        }
        const bool isLink = !member->symbolicLinkTarget.empty();
        require(isLink || got == 0 || got == static_cast<std::size_t>(member->size),
                "not as many bytes as announced");
    }
    reader.finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::size_t done = 0;
    InputFile input([&](std::uint8_t* bytes, std::size_t count) {
        const std::size_t piece = std::min(count, size - done);
        std::memcpy(bytes, data + done, piece);
        done += piece;
        return piece;
    });
    const zpk_fuzz::MemoryBudget budget(kMost);
    try {
        PlainStream stream(std::move(input));
        CpioReader reader(stream);
        readAll(reader);
    } catch (const ArchiveFailure&) {
        // Most inputs are no archive.
        return 0;
    }
    return 0;
}
