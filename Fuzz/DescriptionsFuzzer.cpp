// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The description files of a package: each loader takes the input or refuses it as a whole, and what it gives
// keeps what is promised of it. The setup program of a package that has one is found, whatever its startup
// description says.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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

namespace fs = std::filesystem;

/// A staging folder with a program, and one in a bundle, whose startup description is the input.
class Stage {
public:
    Stage() {
        std::string name = (fs::temp_directory_path() / "zpk-fuzz-XXXXXX").string();
        require(::mkdtemp(name.data()) != nullptr, "no folder");
        m_path = name;
        makeProgram("/Data/run");
        makeProgram("/Data/Setup.app/Contents/Linux/run");
        std::ofstream(m_path + "/Data/Setup.app/Contents/Info.plist") << "{ CFBundleExecutable = run; }";
        fs::create_directory(m_path + "/Info");
    }
    ~Stage() { fs::remove_all(m_path); }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    std::string startup() const { return m_path + "/Info/Startup.xml"; }

    void check() const {
        const ZPKSetupProgram program = ZPKSetupProgramFinder::find(m_path);
        require(program.path.has_value(), "no program is found");
        require(!program.parameters || program.parameters->size() == 1, "not one parameter");
    }

private:
    void makeProgram(const std::string& name) const {
        const fs::path program = m_path + name;
        fs::create_directories(program.parent_path());
        std::ofstream(program) << "#!/bin/sh\n";
        fs::permissions(program, fs::perms::owner_all);
    }

    std::string m_path;
};

void checkStartup(const std::string& path) {
    const std::unique_ptr<const CStartupType> startup(CZPKXMLLoader::LoadStartupXML(path));
    if (startup) {
        static Stage stage;
        fs::copy_file(path, stage.startup(), fs::copy_options::overwrite_existing);
        stage.check();
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
