// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/SparseFileWriter.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "Archive/Failure.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kPageSize = 4096;

/// A shorter hole saves less than the extra system call costs.
constexpr std::size_t kHoleLimit = 4 * kPageSize;

bool isZeroPage(const std::uint8_t* page) {
    return page[0] == 0 && std::memcmp(page, page + 1, kPageSize - 1) == 0;
}

/// Length of the run of whole zero pages at the start.
std::size_t zeroRun(std::span<const std::uint8_t> bytes) {
    std::size_t run = 0;
    while (bytes.size() - run >= kPageSize && isZeroPage(bytes.data() + run)) {
        run += kPageSize;
    }
    return run;
}

}  // namespace

void SparseFileWriter::write(std::span<const std::uint8_t> bytes) {
    if (m_endsInHole) {
        // Blocks rarely start at a page, and a hole should not end for that.
        bytes = bytes.subspan(skipZeros(bytes.first(std::min(bytes.size(), toPageStart()))));
    }
    std::size_t dataStart = 0;
    for (std::size_t at = toPageStart(); at + kHoleLimit <= bytes.size(); at += kPageSize) {
        std::size_t run = zeroRun(bytes.subspan(at));
        if (run >= kHoleLimit) {
            writeData(bytes.subspan(dataStart, at - dataStart));
            m_offset += static_cast<std::int64_t>(run);
            m_endsInHole = true;
            dataStart = at + run;
        }
        // The page that ends the run has been looked at already.
        at += run;
    }
    std::span<const std::uint8_t> rest = bytes.subspan(dataStart);
    if (m_endsInHole && rest.size() < kPageSize) {
        rest = rest.subspan(skipZeros(rest));
    }
    writeData(rest);
}

std::size_t SparseFileWriter::toPageStart() const {
    return (kPageSize - static_cast<std::size_t>(m_offset) % kPageSize) % kPageSize;
}

std::size_t SparseFileWriter::skipZeros(std::span<const std::uint8_t> bytes) {
    auto data = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte != 0; });
    m_offset += data - bytes.begin();
    return static_cast<std::size_t>(data - bytes.begin());
}

void SparseFileWriter::writeData(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) {
        return;
    }
    if (!ZPKDescriptorIO::writeWholeAt(m_descriptor, bytes.data(), bytes.size(), m_offset)) {
        throwWriteFailure(errno);
    }
    m_offset += static_cast<std::int64_t>(bytes.size());
    m_endsInHole = false;
}

void SparseFileWriter::finish() {
    const auto cut = [this] { return ::ftruncate(m_descriptor, m_offset); };
    if (m_endsInHole && ZPKDescriptorIO::retry(cut) != 0) {
        throwWriteFailure(errno);
    }
}

}  // namespace zpk_archive
