// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Property lists in every form: whatever the bytes are, reading them ends, and within the stack. A bundle
// that they describe has its main program among its own programs, or none.

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Fuzz/InputInMemory.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKPropertyList.h"

namespace {

namespace fs = std::filesystem;
using zpk_fuzz::require;

/// A bundle described by the input, with a program in the right place and one elsewhere.
class DescribedBundle {
public:
    DescribedBundle() {
        std::string name = (fs::temp_directory_path() / "zpk-fuzz-XXXXXX").string();
        require(::mkdtemp(name.data()) != nullptr, "no folder");
        m_path = name + "/Setup.app";
        for (const char* program : {"/Contents/Linux/run", "/Contents/run"}) {
            fs::create_directories(fs::path(m_path + program).parent_path());
            std::ofstream(m_path + program) << "#!/bin/sh\n";
            fs::permissions(m_path + program, fs::perms::owner_all);
        }
        fs::create_directories(m_path + "/Contents/Resources");
        const std::string& input = m_input.hold("", 0);
        fs::create_symlink(input, m_path + "/Contents/Info.plist");
        fs::create_symlink(input, m_path + "/Contents/Resources/InfoPlist.strings");
    }
    ~DescribedBundle() { fs::remove_all(fs::path(m_path).parent_path()); }
    DescribedBundle(const DescribedBundle&) = delete;
    DescribedBundle& operator=(const DescribedBundle&) = delete;

    void check(std::string_view description) {
        m_input.hold(description.data(), description.size());
        const auto bundle = ZPKBundle::bundleWithPath(m_path);
        require(bundle.has_value(), "a described folder that is no bundle");
        const auto program = bundle->executablePath();
        require(!program || *program == m_path + "/Contents/Linux/run", "a program from elsewhere");
        static_cast<void>(bundle->localizedName());
        static_cast<void>(bundle->displayName());
    }

private:
    zpk_fuzz::InputInMemory m_input;
    std::string m_path;
};

void checkText(std::string_view text) {
    std::size_t errorAt = 0;
    std::vector<ZPKPropertyList::KeyPlace> places;
    const auto list = ZPKPropertyList::dictionaryWithText(text, errorAt, &places);
    require(list || errorAt <= text.size(), "an error behind the end");
    std::set<std::string> keys;
    for (const ZPKPropertyList::KeyPlace& place : places) {
        require(place.offset < text.size(), "a key behind the end");
        keys.insert(place.key);
    }
    require(!list || std::ranges::equal(list->keys(), keys), "other keys than those with a place");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
    static DescribedBundle bundle;
    const std::string_view text(reinterpret_cast<const char*>(bytes), length);
    constexpr std::size_t kTimes = 400;
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(length, kTimes));
    if (const auto list = ZPKPropertyList::dictionaryWithBytes(text)) {
        for (const std::string& key : list->keys()) {
            static_cast<void>(list->stringForKey(key));
            static_cast<void>(list->stringArrayForKey(key));
        }
        bundle.check(text);
    }
    checkText(text);
    return 0;
}
