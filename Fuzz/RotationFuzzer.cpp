// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Scrambling and unscrambling: the pieces are where they are promised to be, and there and back is nothing.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"
#include "Package/ZPKScrambler.h"

namespace {

namespace fs = std::filesystem;
using zpk_fuzz::require;

constexpr std::size_t kLongest = 300000;

struct Folder {
    Folder() {
        std::string name = (fs::temp_directory_path() / "zpk-fuzz-XXXXXX").string();
        require(::mkdtemp(name.data()) != nullptr, "no folder");
        path = name + "/";
    }
    ~Folder() { fs::remove_all(path); }
    std::string path;
};

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The first bytes say how long the archive is; the others are repeated in it, counted, so that no two
/// places are alike.
std::string archiveOf(const std::uint8_t* data, std::size_t size) {
    std::size_t length = 0;
    for (std::size_t at = 0; at < 3 && at < size; ++at) {
        length = length << 8 | data[at];
    }
    length %= kLongest;
    std::string archive;
    for (std::size_t round = 0; archive.size() < length; ++round) {
        archive += std::to_string(round);
        archive.append(reinterpret_cast<const char*>(data), size);
    }
    archive.resize(length);
    return archive;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    const std::string plain = folder.path + "plain";
    const std::string scrambled = folder.path + "scrambled";
    const std::string back = folder.path + "back";
    const std::string archive = archiveOf(data, size);
    std::ofstream(plain, std::ios::binary | std::ios::trunc) << archive;
    fs::remove(back);
    require(static_cast<bool>(ZPKScrambler::scramble(plain, scrambled)), "it cannot be scrambled");
    require(static_cast<bool>(ZPKScrambler::unscramble(scrambled, back)), "it cannot be unscrambled");
    require(contentsOf(back) == archive, "there and back it is another");
    const std::string made = contentsOf(scrambled);
    std::string joined;
    for (const ZPKScrambler::Piece& piece : ZPKScrambler::piecesOfPlain(made.size())) {
        joined += made.substr(piece.offset, piece.size);
    }
    require(joined == archive, "the pieces are not where they are promised");
    // In place, too.
    require(static_cast<bool>(ZPKScrambler::scramble(plain, plain)), "it cannot be scrambled in place");
    require(contentsOf(plain) == made, "in place it is another");
    return 0;
}
