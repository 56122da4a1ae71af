// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// A child process for tests: writes what it was started with into the file that ZPK_PROBE_REPORT
// names, then a line on each standard stream, and ends as ZPK_PROBE_END says.

#include <dirent.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string linkTarget(const std::string& link) {
    std::string target(4096, '\0');
    const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return target;
}

std::string openDescriptors() {
    std::vector<int> descriptors;
    DIR* const folder = ::opendir("/proc/self/fd");
    while (const dirent* entry = ::readdir(folder)) {
        const int descriptor = std::atoi(entry->d_name);
        if (entry->d_name[0] != '.' && descriptor != ::dirfd(folder)) {
            descriptors.push_back(descriptor);
        }
    }
    ::closedir(folder);
    std::sort(descriptors.begin(), descriptors.end());
    std::string text;
    for (const int descriptor : descriptors) {
        text += std::to_string(descriptor) + " ";
    }
    return text;
}

std::string signals() {
    std::string text;
    sigset_t mask;
    ::sigprocmask(SIG_SETMASK, nullptr, &mask);
    for (int signal = 1; signal < SIGRTMAX; ++signal) {
        struct sigaction action;
        if (sigismember(&mask, signal) == 1) {
            text += "blocked " + std::to_string(signal) + " ";
        }
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_DFL) {
            text += "changed " + std::to_string(signal) + " ";
        }
    }
    return text;
}

void writeReport(int count, char** arguments) {
    const char* const path = std::getenv("ZPK_PROBE_REPORT");
    if (path == nullptr) {
        return;
    }
    const std::string descriptors = openDescriptors();
    std::ofstream report(path, std::ios::binary);
    report << "arguments\n";
    for (int index = 1; index < count; ++index) {
        report << arguments[index] << '\0';
    }
    report << "\nfolder " << linkTarget("/proc/self/cwd") << "\ndescriptors " << descriptors << "\nsignals "
           << signals() << "\nerrors " << linkTarget("/proc/self/fd/2") << "\n";
}

}  // namespace

int main(int count, char** arguments) {
    writeReport(count, arguments);
    std::cout << "probe output" << std::endl;
    std::cerr << "probe error" << std::endl;
    const char* const end = std::getenv("ZPK_PROBE_END");
    const std::string how = end == nullptr ? "" : end;
    if (how == "signal") {
        ::kill(::getpid(), SIGKILL);
    }
    if (how == "slow") {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        std::ofstream(std::string(std::getenv("ZPK_PROBE_REPORT")) + ".end") << "end";
    }
    return std::atoi(how.c_str());
}
