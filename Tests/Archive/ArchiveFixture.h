// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Archive/Archive.h"
#include "Tests/Support/TemporaryFolder.h"

namespace zpk_test {

/// How a child process ended.
struct Outcome {
    int exitStatus = -1;  ///< 128 + the signal's number when a signal ended it.
    std::string standardError;
    long peakMemory = 0;  ///< KiB.
};

/// Runs the program with standard error into a file; `prepare` runs in the child before it.
Outcome runProgram(const std::vector<std::string>& command, const std::function<void()>& prepare = {});

Outcome create(const std::string& source, const std::string& archive,
               const std::function<void()>& prepare = {});
Outcome extract(const std::string& archive, const std::string& folder,
                const std::function<void()>& prepare = {});

/// Runs a line of shell and expects it to succeed.
void shell(const std::string& line);
/// Whether the program is on this machine.
bool hasProgram(const std::string& name);

/// Gives up the rights of root for good, where the process has them; for `prepare`.
void becomeNobody();

/// Text of the letters a to h and line feeds, the same for each seed.
std::string randomText(std::size_t size, unsigned seed);

/// Sets the time of the file, folder or link itself.
void setTime(const std::string& path, time_t seconds);

/// Each thing below the folder by its relative path, with all that must survive a round trip: type,
/// permissions, time (whole seconds; of folders and links only with `otherTimes`), contents' digest or link
/// target, and which names are one file.
std::map<std::string, std::string> snapshot(const std::string& folder, bool otherTimes = true);

/// One member of a hand-made archive.
struct RawMember {
    std::string name;
    std::uint32_t mode = S_IFREG | 0644;
    std::string data = {};
    std::uint32_t inode = 0;
    std::uint32_t linkCount = 1;
    std::uint64_t announcedSize = UINT64_MAX;  ///< UINT64_MAX: the data's size.
    std::uint64_t modified = 1000000000;
};

void appendOdc(std::string& archive, const RawMember& member);
void appendNewc(std::string& archive, const RawMember& member);

/// A plain odc archive with its end mark.
std::string makeOdc(const std::vector<RawMember>& members);
/// A plain newc archive with its end mark.
std::string makeNewc(const std::vector<RawMember>& members);

/// A sink that keeps what it is told.
class KeepingSink : public zpk_archive::ErrorSink {
public:
    void error(const std::string& name, const std::string& reason) override {
        errors.push_back(name + ": " + reason);
    }
    void warning(const std::string& name, const std::string& reason) override {
        warnings.push_back(name + ": " + reason);
    }
    std::vector<std::string> errors;
    std::vector<std::string> warnings;
};

}  // namespace zpk_test
