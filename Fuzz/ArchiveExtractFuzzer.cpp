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

namespace {

namespace fs = std::filesystem;

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

/// To be run with -malloc_limit_mb=5000: the CPIO reader asks for the room of an announced name at once, up
/// to 4 GiB, but neither fills nor keeps it.
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
