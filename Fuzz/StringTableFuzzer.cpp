// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Any bytes make a string table: the parse neither fails nor crashes, and where a block of the file
// ends does not change what is read. Whoever is told of the entries is told the same, and where they stand.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundleStringElement.h"
#include "Common/CResourceBundleStringTableParser.h"
#include "Common/IStringTableListener.h"
#include "Fuzz/InputInMemory.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"

namespace {

using varno_zpk::CBaseObject;
using varno_zpk::CBaseObjectUtil;
using varno_zpk::CResourceBundleStringElement;
using varno_zpk::CResourceBundleStringTableParser;
using varno_zpk::IStringTableListener;
using zpk_fuzz::require;

using Entries = std::vector<std::pair<std::string, std::string>>;

constexpr std::size_t kBlockSize = 10240;

Entries parse(std::string contents) {
    std::FILE* file = fmemopen(contents.data(), contents.size(), "r");
    if (file == nullptr) {
        std::abort();
    }
    std::vector<CBaseObject*> elements;
    CResourceBundleStringTableParser().ParseInternal(file, "table", elements);
    std::fclose(file);

    Entries entries;
    for (CBaseObject* object : elements) {
        const auto* element = DOWN_CAST(CResourceBundleStringElement*, object);
        entries.emplace_back(element->GetKey(), element->GetValue());
    }
    CBaseObjectUtil::Destroy(elements);
    return entries;
}

class Recorder : public IStringTableListener {
public:
    explicit Recorder(std::string_view table) : m_table(table) {}

    void OnEntry(const std::string& key, const std::string& value, const EntryPlace& place) override {
        require(place.key < place.value && place.value <= place.end && place.end < m_table.size(),
                "an entry in no order");
        require(m_table[place.value - 1] == '=' && m_table[place.end] == ';', "an entry is elsewhere");
        // A null character ends what an element holds.
        entries.emplace_back(key.c_str(), value.c_str());
    }
    void OnFault(const char*, std::size_t offset) override {
        require(offset <= m_table.size(), "a fault behind the end");
    }

    Entries entries;

private:
    std::string_view m_table;
};

Entries parseForListener(std::string_view table) {
    static zpk_fuzz::InputInMemory file;
    Recorder recorder(table);
    const std::string& path = file.hold(table.data(), table.size());
    require(CResourceBundleStringTableParser().Parse(path.c_str(), recorder) == 0, "a table that fails");
    return std::move(recorder.entries);
}

/// A comment line of `size` bytes, 3 or more.
std::string padding(std::size_t size) {
    return "//" + std::string(size - 3, '.') + "\n";
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Faults are reported on standard output, by the million.
    return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kTimes = 400;
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(size, kTimes));
    const std::string table(reinterpret_cast<const char*>(data), size);
    if (size > 0) {
        require(parse(table) == parseForListener(table), "a listener is told of others");
    }
    const Entries expected = parse(padding(3) + table);
    // The byte behind the end of the block is chosen by the input, as deep into the table as it is long.
    const std::size_t opening = size > 0 ? data[0] * size / 256 % kBlockSize : 0;
    if (opening <= kBlockSize - 3 && parse(padding(kBlockSize - opening) + table) != expected) {
        std::abort();
    }
    return 0;
}
