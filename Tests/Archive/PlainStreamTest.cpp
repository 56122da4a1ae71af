// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/PlainStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "Tests/Archive/ArchiveFixture.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace zpk_archive;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

std::string noise(std::size_t size) {
    std::mt19937 numbers(1);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(numbers()); });
    return bytes;
}

TEST(PlainStreamTest, AStreamThatIsInflatedInOneThreadIsReadInAnother) {
    // Bytes that gain nothing: what has been inflated is about what has been read for it.
    const std::size_t room = BlockPipeline::suitableLength() * kMebibyte;
    const zpk_test::TemporaryFolder folder;
    const std::string plain = noise(room + 4 * kMebibyte);
    zpk_test::writeFile(folder / "plain", plain);
    zpk_test::shell("gzip -1 '" + (folder / "plain") + "'");
    const std::string packed = zpk_test::readFile(folder / "plain.gz");
    std::atomic<std::size_t> given = 0;
    PlainStream stream(InputFile([&](std::uint8_t* bytes, std::size_t count) {
        const std::size_t start = given;
        const std::size_t size = std::min(count, packed.size() - start);
        std::copy_n(packed.begin() + static_cast<std::ptrdiff_t>(start), size, bytes);
        given = start + size;
        return size;
    }));
    // Nobody takes a block, so inflating ends where there is no more room.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (given < room + kMebibyte && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_GE(given, room + kMebibyte);
    std::string got;
    for (auto bytes = stream.next(); !bytes.empty(); bytes = stream.next()) {
        got.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    EXPECT_TRUE(got == plain);
}

}  // namespace
