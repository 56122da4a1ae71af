// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Runs a program of which one system call fails, and tells in JSON what came of it:
//   zpk_fault_injector REPORT FOLDER ASKED KILLED count PROGRAM [ARGUMENT ...]
//   zpk_fault_injector REPORT FOLDER ASKED KILLED CALL:ERROR:NUMBER PROGRAM [ARGUMENT ...]
// CALL is a system call's name, ERROR a number of errno; the programs in FOLDER are counted. After ASKED
// seconds (0: never) the program is asked to end, after KILLED seconds it is killed.

#include <seccomp.h>

#include <charconv>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Tests/Faults/TracedRun.h"

namespace {

int numberIn(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0) {
        throw std::invalid_argument("no number: " + std::string(text));
    }
    return number;
}

std::optional<TracedRun::Fault> faultIn(const std::string& text) {
    if (text == "count") {
        return std::nullopt;
    }
    const std::size_t error = text.find(':');
    const std::size_t number = text.rfind(':');
    const int call = ::seccomp_syscall_resolve_name(text.substr(0, error).c_str());
    if (error == number || call < 0) {
        throw std::invalid_argument("no fault: " + text);
    }
    const std::string_view parts = text;
    return TracedRun::Fault{call, numberIn(parts.substr(error + 1, number - error - 1)),
                            numberIn(parts.substr(number + 1))};
}

std::string nameOf(int call) {
    const std::unique_ptr<char, decltype(&std::free)> name(
        ::seccomp_syscall_resolve_num_arch(SCMP_ARCH_NATIVE, call), &std::free);
    return name ? name.get() : std::to_string(call);
}

nlohmann::json asJSON(const TracedRun::Report& report) {
    nlohmann::json json{
        {"status", report.status},           {"struck", nullptr},         {"hung", report.hasHung},
        {"asked", report.wasAsked},          {"orphans", report.orphans}, {"deaths", nlohmann::json::array()},
        {"counts", nlohmann::json::object()}};
    if (report.struck) {
        json["struck"] = *report.struck;
    }
    for (const TracedRun::Death& death : report.deaths) {
        json["deaths"].push_back(
            {{"program", death.program}, {"signal", death.signal}, {"loading", death.wasLoading}});
    }
    for (const auto& [call, count] : report.counts) {
        json["counts"][nameOf(call)] = count;
    }
    return json;
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kFirstOfProgram = 6;
    if (argc <= kFirstOfProgram) {
        std::cerr << "usage: " << argv[0]
                  << " REPORT FOLDER ASKED KILLED count|CALL:ERROR:NUMBER PROGRAM ...\n";
        return EXIT_FAILURE;
    }
    try {
        TracedRun run(argv[2], faultIn(argv[5]));
        std::ofstream report(argv[1]);
        report << asJSON(run.run(argv + kFirstOfProgram, {numberIn(argv[3]), numberIn(argv[4])})) << "\n";
        return report.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << argv[0] << ": " << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
