// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// An archive, unpacked beside a file that must not change, and read in pieces as if it came over a wire. What
// was unpacked is packed again, and that archive can be read.

#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

#include "Archive/Archive.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"

namespace {

namespace fs = std::filesystem;
using zpk_fuzz::require;

/// What unpacking any archive is promised to stay below.
constexpr std::size_t kMost = std::size_t{64} << 20;

class SilentSink : public zpk_archive::ErrorSink {
public:
    void error(const std::string&, const std::string&) override {}
    void warning(const std::string&, const std::string&) override {}
};

/// A folder to unpack into, with a sentinel file and a folder beside it that no archive may touch.
struct World {
    World() {
        std::string name = (fs::temp_directory_path() / "zpk-fuzz-XXXXXX").string();
        require(mkdtemp(name.data()) != nullptr, "no folder");
        root = name;
        fs::create_directory(root + "/outside");
        std::ofstream(root + "/sentinel") << "untouched";
    }
    ~World() { fs::remove_all(root); }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    std::string archive() const { return root + "/archive"; }
    std::string packed() const { return root + "/packed"; }

    bool isUntouched() const {
        std::string contents;
        std::ifstream(root + "/sentinel") >> contents;
        std::ptrdiff_t things = std::distance(fs::directory_iterator(root), fs::directory_iterator());
        return contents == "untouched" && fs::is_empty(root + "/outside") && things == 5 &&
               fs::hard_link_count(root + "/sentinel") == 1 &&
               fs::status(root + "/sentinel").permissions() == before;
    }

    std::string root;
    fs::perms before = fs::perms::unknown;
};

/// Takes every other member's data.
bool readInPieces(std::span<const std::uint8_t> bytes, std::size_t longest, SilentSink& sink) {
    std::size_t number = 0;
    std::size_t got = 0;
    std::size_t announced = 0;
    const auto source = [&](std::uint8_t* place, std::size_t count) {
        const std::size_t piece = std::min({count, longest, bytes.size()});
        std::memcpy(place, bytes.data(), piece);
        bytes = bytes.subspan(piece);
        return piece;
    };
    const auto reader = [&](const zpk_archive::MemberDescription& member) -> zpk_archive::DataTaker {
        require(got <= announced, "more bytes than announced");
        got = 0;
        announced = member.size;
        if (++number % 2 == 0) {
            return {};
        }
        return [&](std::span<const std::uint8_t> piece) { got += piece.size(); };
    };
    return zpk_archive::read("input", source, reader, sink);
}

/// Others than root may have taken their own access away.
void openFolders(const fs::path& folder) {
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add);
    for (const fs::directory_entry& item : fs::directory_iterator(folder)) {
        if (item.symlink_status().type() == fs::file_type::directory) {
            openFolders(item.path());
        }
    }
}

/// A folder that cannot be read, which is root's never, keeps it from being packed.
void packAgain(const World& world, const std::string& folder, SilentSink& sink) {
    constexpr std::int64_t kTime = 1'000'000'000;
    const bool isPacked = zpk_archive::create(folder, world.packed(), sink, kTime);
    if (!isPacked) {
        std::ofstream(world.packed()) << "nothing";
    }
    require(isPacked || ::geteuid() != 0, "what was unpacked cannot be packed");
    const auto visit = [](const zpk_archive::MemberDescription&) {};
    require(!isPacked || zpk_archive::list(world.packed(), visit, sink), "what was packed cannot be read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static World world;
    if (world.before == fs::perms::unknown) {
        world.before = fs::status(world.root + "/sentinel").permissions();
        std::ofstream(world.packed()) << "nothing yet";
    }
    const std::string target = world.root + "/in";
    std::ofstream(world.archive(), std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    fs::create_directory(target);
    SilentSink sink;
    const zpk_fuzz::MemoryBudget budget(kMost);
    const bool isUnpacked = zpk_archive::extract(world.archive(), target, sink);
    const std::size_t longest = 1 + size % 509;
    const bool isRead = readInPieces({data, size}, longest, sink);
    require(isRead || !isUnpacked, "what can be unpacked cannot be read");
    require(world.isUntouched(), "something outside the folder was touched");
    if (isUnpacked) {
        packAgain(world, target, sink);
    }
    if (::geteuid() != 0) {
        openFolders(target);
    }
    fs::remove_all(target);
    return 0;
}
