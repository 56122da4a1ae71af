// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Archive/Archive.h"
#include "Archive/BoundedErrorLog.h"
#include "Base/ZPKParentProcess.h"

namespace {

constexpr int kUsageStatus = 64;
constexpr const char* kUsage = "usage: ditto -c -z -rsrc --keepParent SRC DST | ditto -x -z --rsrc SRC DST\n";

bool startsWith(const std::vector<std::string>& arguments, const std::vector<std::string>& options) {
    return arguments.size() == options.size() + 2 &&
           std::equal(options.begin(), options.end(), arguments.begin());
}

/// Each level of a tree takes a descriptor while the work is below it.
void allowDeepTrees() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace

int main(int argc, char** argv) {
    // Without whoever lets the tool work for it alone, the work would be for nobody, and in nobody's folder.
    if (!ZPKParentProcess::endWithIt()) {
        return EXIT_FAILURE;
    }
    // Failed writes are to be reported, not to end the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // What is made must be open to its owner, whatever the caller's mask.
    ::umask(::umask(0) & 077);
    allowDeepTrees();

    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    bool creating = startsWith(arguments, {"-c", "-z", "-rsrc", "--keepParent"});
    if (!creating && !startsWith(arguments, {"-x", "-z", "--rsrc"})) {
        std::fputs(kUsage, stderr);
        return kUsageStatus;
    }
    zpk_archive::BoundedErrorLog log(STDERR_FILENO);
    const std::string& source = arguments[arguments.size() - 2];
    const std::string& destination = arguments.back();
    bool good = creating ? zpk_archive::create(source, destination, log)
                         : zpk_archive::extractInCage(source, destination, log);
    return good ? 0 : 1;
}
