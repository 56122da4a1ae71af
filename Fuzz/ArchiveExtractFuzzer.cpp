// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "Archive/Archive.h"
#include "Fuzz/MemoryBudget.h"

namespace {

namespace fs = std::filesystem;

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
        if (mkdtemp(name.data()) == nullptr) {
            std::abort();
        }
        root = name;
        fs::create_directory(root + "/outside");
        std::ofstream(root + "/sentinel") << "untouched";
    }
    ~World() { fs::remove_all(root); }

    bool isUntouched() const {
        std::string contents;
        std::ifstream(root + "/sentinel") >> contents;
        std::ptrdiff_t things = std::distance(fs::directory_iterator(root), fs::directory_iterator());
        return contents == "untouched" && fs::is_empty(root + "/outside") && things == 4 &&
               fs::hard_link_count(root + "/sentinel") == 1 &&
               fs::status(root + "/sentinel").permissions() == before;
    }

    std::string root;
    fs::perms before = fs::perms::unknown;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static World world;
    if (world.before == fs::perms::unknown) {
        world.before = fs::status(world.root + "/sentinel").permissions();
    }
    const std::string archive = world.root + "/archive";
    const std::string target = world.root + "/in";
    std::ofstream(archive, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    fs::create_directory(target);
    SilentSink sink;
    const zpk_fuzz::MemoryBudget budget(kMost);
    zpk_archive::extract(archive, target, sink);
    zpk_archive::list(
        archive, [](const zpk_archive::MemberDescription&) {}, sink);
    if (!world.isUntouched()) {
        std::fputs("something outside the folder was touched\n", stderr);
        std::abort();
    }
    fs::remove_all(target);
    return 0;
}
