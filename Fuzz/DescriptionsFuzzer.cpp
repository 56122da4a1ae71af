// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The description files of a package: each loader takes the input or refuses it as a whole, and what it gives
// keeps what is promised of it.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "Common/CXMLParser.h"
#include "Description/CLanguagesType.h"
#include "Description/CStartupType.h"
#include "Description/CUpdateInfoType.h"
#include "Description/CZPKXMLLoader.h"
#include "Description/ZPKSetupProgramFinder.h"
#include "Fuzz/InputInMemory.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"

using namespace varno_zpk;
using zpk_fuzz::require;

namespace {

void checkStartup(const std::string& path) {
    const std::unique_ptr<const CStartupType> startup(CZPKXMLLoader::LoadStartupXML(path));
    if (startup) {
        static_cast<void>(ZPKSetupProgramFinder::programOfExec(startup->exec, "/nowhere"));
    }
}

void checkCondition(const std::string& path) {
    const std::unique_ptr<const CUpdateInfoType> condition(CZPKXMLLoader::LoadConditionXML(path));
    if (condition && condition->conditions) {
        for (const auto& disc : condition->conditions->discs) {
            require(disc != nullptr, "a disc that is none");
        }
    }
    if (condition && condition->targetItems) {
        static_cast<void>(condition->targetItems->GetDisplayNameList());
    }
}

void checkLanguages(const std::string& path) {
    const std::unique_ptr<const CLanguagesType> languages = CZPKXMLLoader::LoadLanguagesXML(path);
    if (languages) {
        for (const auto& language : languages->languages) {
            require(language != nullptr, "a language that is none");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static zpk_fuzz::InputInMemory file;
    const std::string& path = file.hold(data, size);
    // A tree of one-letter elements is a hundred times its text.
    constexpr std::size_t kTimes = 400;
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(size, kTimes));
    checkStartup(path);
    checkCondition(path);
    checkLanguages(path);
    return 0;
}
