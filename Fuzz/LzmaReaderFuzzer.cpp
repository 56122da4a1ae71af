// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The reader of the compressed program at the beginning of a run file: it stays inside both its buffers.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Tools/run/LzmaReader.h"

/// The first byte says how much is to come out.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::unique_ptr<zpk_run::LzmaReader> reader = std::make_unique<zpk_run::LzmaReader>();
    // Buffers of just that size, whose ends the address sanitizer guards.
    const std::vector<unsigned char> in(data + 1, data + size);
    std::vector<unsigned char> out(std::size_t{data[0]} * 64);
    static_cast<void>(reader->read(in.data(), in.size(), out.data(), out.size()));
    return 0;
}
