// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The expansion of variables against one that is written the other way round: the text is cut at each dollar
// sign, and every second piece is a name, unless it is the last.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "Common/CVariableManager.h"
#include "Common/IVariableValueFinder.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"

namespace {

using namespace varno_zpk;

std::string valueOf(const std::string& reference) {
    return "<" + std::to_string(reference.size()) + (reference.size() % 2 == 0 ? "$" : "") + ">";
}

class Finder : public IVariableValueFinder {
public:
    const char* FindValue(const std::string& name, std::string& value) override {
        value = valueOf(name);
        return value.c_str();
    }
};

std::vector<std::string> cut(const std::string& text) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = text.find('$'); end != std::string::npos; end = text.find('$', start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::string expected(const std::string& text) {
    const std::vector<std::string> pieces = cut(text);
    std::string out = pieces[0];
    for (std::size_t at = 1; at < pieces.size(); ++at) {
        const bool isName = at % 2 == 1 && at + 1 < pieces.size();
        const bool isOpenEnd = at % 2 == 1 && !isName;
        out += isName ? valueOf("$" + pieces[at] + "$") : (isOpenEnd ? "$" : "") + pieces[at];
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Each value that is found is told on standard error; the fuzzer itself keeps the stream that it has.
    stderr = std::fopen("/dev/null", "we");
    return stderr != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(std::string(reinterpret_cast<const char*>(data), size).c_str());
    constexpr std::size_t kTimes = 64;
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(size, kTimes));
    Finder finder;
    std::string out = "before";
    const char* const given =
        CVariableManager::GetManager()->ExpandVariablesInString(text.c_str(), out, &finder);
    zpk_fuzz::require(given == expected(text), "the reference says otherwise");
    // A result may be the next text.
    const std::string again = expected(given);
    if (given == text.c_str()) {
        out = text;
    }
    zpk_fuzz::require(
        CVariableManager::GetManager()->ExpandVariablesInString(out.c_str(), out, &finder) == again,
        "in place it is another");
    return 0;
}
