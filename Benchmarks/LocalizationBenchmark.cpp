// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Looking up a text and parsing a string table. The bars: a lookup under 200 ns with diagnostics
// discarded, a parse of a large table at 300 MB/s or more.
//
// Each hit is traced on standard error. It is discarded in two ways here: inside the process, by a
// buffer that goes to the null device now and then, which shows the cost of the lookup and of putting
// the line together; and, in the benchmarks named Unbuffered, by the null device alone, line by line
// as in the launcher, which adds a system call to each hit.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Common/CBaseObjectUtil.h"
#include "Common/CLocalizer.h"
#include "Common/CResourceBundle.h"
#include "Common/CResourceBundleStringTableParser.h"

namespace {

using varno_zpk::CBaseObject;
using varno_zpk::CBaseObjectUtil;
using varno_zpk::CLocalizer;
using varno_zpk::CResourceBundle;
using varno_zpk::CResourceBundleStringTableParser;

/// A folder that lasts as long as the program.
class WorkingFolder {
public:
    WorkingFolder() {
        if (mkdtemp(m_path.data()) == nullptr) {
            std::abort();
        }
    }
    ~WorkingFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

    std::string write(const std::string& name, const std::string& contents) const {
        std::string path = m_path + "/" + name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }
    const std::string& path() const { return m_path; }

private:
    std::string m_path = (std::filesystem::temp_directory_path() / "zpk-benchmark-XXXXXX").string();
};

const WorkingFolder& folder() {
    static const WorkingFolder kFolder;
    return kFolder;
}

std::string keyOf(long number) {
    return "ZPKString_TEXT_" + std::to_string(number * 7919);
}

/// Entries as a translator writes them, one a line with a comment here and there.
std::string table(long entryCount) {
    std::string contents = "\xEF\xBB\xBF// The texts of the installer.\n";
    for (long number = 0; number < entryCount; ++number) {
        if (number % 8 == 0) {
            contents += "\n/* A group of texts */\n";
        }
        contents += "\"" + keyOf(number) + "\" = \"The package “%s” cannot be installed.\\nInsert disc " +
                    std::to_string(number) + " and try again.\";\n";
    }
    return contents;
}

/// Makes a fresh bundle with one language of `entryCount` texts the only default one.
void useBundle(long entryCount) {
    const std::string name = "UILang" + std::to_string(entryCount);
    folder().write(name + "/en/ZPKStringTable.def", table(entryCount));
    CResourceBundle::ClearAllDefaultBundles();
    CResourceBundle::AddDefaultBundlePath((folder().path() + "/" + name).c_str());
}

void bufferStandardError() {
    static char buffer[65536];
    std::setvbuf(stderr, buffer, _IOFBF, sizeof(buffer));
}

/// Makes standard error unbuffered, as it is at the start of a program, for a stretch of code.
class UnbufferedStandardError {
public:
    UnbufferedStandardError() { std::setvbuf(stderr, nullptr, _IONBF, 0); }
    ~UnbufferedStandardError() { bufferStandardError(); }
    UnbufferedStandardError(const UnbufferedStandardError&) = delete;
    UnbufferedStandardError& operator=(const UnbufferedStandardError&) = delete;
};

void lookUp(benchmark::State& state) {
    useBundle(state.range(0));
    const std::string key = keyOf(state.range(0) / 3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(CResourceBundle::GetLocalizedString(key.c_str()));
    }
}
BENCHMARK(lookUp)->Arg(24)->Arg(1000);

void lookUpUnbuffered(benchmark::State& state) {
    const UnbufferedStandardError unbuffered;
    lookUp(state);
}
BENCHMARK(lookUpUnbuffered)->Arg(24)->Arg(1000);

void lookUpMissed(benchmark::State& state) {
    useBundle(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(CResourceBundle::GetLocalizedString("ZPKString_TEXT_MISSING"));
    }
}
BENCHMARK(lookUpMissed)->Arg(24)->Arg(1000);

void localize(benchmark::State& state) {
    useBundle(state.range(0));
    const std::string key = keyOf(state.range(0) / 3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(CLocalizer::GetLocalizer()->Localize(key.c_str()));
    }
}
BENCHMARK(localize)->Arg(24);

void parseTable(benchmark::State& state) {
    const std::string contents = table(state.range(0));
    const std::string path = folder().write("table.def", contents);
    for (auto _ : state) {
        std::vector<CBaseObject*> elements;
        CResourceBundleStringTableParser().Parse(path.c_str(), elements);
        CBaseObjectUtil::Destroy(elements);
    }
    state.SetBytesProcessed(static_cast<int64_t>(contents.size()) * state.iterations());
}
BENCHMARK(parseTable)->Arg(24)->Arg(1000)->Arg(50000);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return EXIT_FAILURE;
    }
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (null < 0 || dup2(null, STDERR_FILENO) < 0) {
        return EXIT_FAILURE;
    }
    close(null);
    bufferStandardError();
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
