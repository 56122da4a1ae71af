// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSecondStage.h"

#include <spawn.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <utility>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKEnvironment.h"

namespace {

/// The trial's name for the program.
constexpr std::string_view kTrial = "Zephyrkit-trial";

constexpr std::string_view kLoaderPrefix = "LD_";
constexpr std::string_view kTunables = "GLIBC_TUNABLES=";
constexpr std::string_view kHidingPrefix = "ZEPHYRKIT_KEPT_";

bool isKeptFromLoader(std::string_view entry) {
    // The last is for a launcher that was started by one: each takes away what it has added.
    return entry.starts_with(kLoaderPrefix) || entry.starts_with(kTunables) ||
           entry.starts_with(kHidingPrefix);
}

/// For calls that take writable texts and do not write.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// What the loader is to be called with so that it starts the program under that name. What the machine's own
/// loader has noted of its libraries does not concern the carried one.
std::vector<std::string> loaderArguments(const ZPKCarriedParts& parts, const std::string& name) {
    return {parts.loader(), "--inhibit-cache", "--argv0", name, parts.program()};
}

/// The number at the beginning of `text`, which is taken away with the character behind it.
unsigned int takeNumber(std::string_view& text) {
    unsigned int number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const auto length = static_cast<std::size_t>(stop - text.data());
    text.remove_prefix(std::min(length + 1, text.size()));
    return error == std::errc() ? number : 0;
}

}  // namespace

bool ZPKSecondStage::hasDisplay() {
    return ZPKEnvironment::isSet("DISPLAY") || ZPKEnvironment::isSet("WAYLAND_DISPLAY") ||
           ZPKEnvironment::isSet("QT_QPA_PLATFORM");
}

ZPKOutcome ZPKSecondStage::probe() const {
    struct utsname system;
    if (::uname(&system) == 0 && !suitsKernel(system.release)) {
        return ZPKFailure(m_parts.folder(), "made for a newer kernel");
    }
    return m_parts.find(m_module);
}

ZPKFailure ZPKSecondStage::start(int argc, char** argv, char** environment) const {
    const std::string loader = m_parts.loader();
    std::vector<std::string> variables = withoutLoaderVariables(environment);
    if (const ZPKOutcome tried = tryStart(variables); !tried) {
        return tried.failure();
    }
    // The process and, without an identifier, its windows take their name from the first argument.
    std::vector<std::string> arguments = loaderArguments(m_parts, argc > 0 ? argv[0] : m_parts.program());
    for (int index = 1; index < argc; ++index) {
        arguments.emplace_back(argv[index]);
    }
    ::execve(loader.c_str(), pointersTo(arguments).data(), pointersTo(variables).data());
    return ZPKFailure::ofSystem(loader, errno);
}

ZPKOutcome ZPKSecondStage::tryStart(std::vector<std::string> variables) const {
    const std::string loader = m_parts.loader();
    std::vector<std::string> arguments = loaderArguments(m_parts, std::string(kTrial));
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    // The loader's own words are many, and not made for a terminal.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::posix_spawn_file_actions_addclose(&actions, stream);
    }
    pid_t child = -1;
    const int error = ::posix_spawn(&child, loader.c_str(), &actions, nullptr, pointersTo(arguments).data(),
                                    pointersTo(variables).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        return ZPKFailure::ofSystem(loader, error);
    }
    int status = 0;
    const bool isKnown = ZPKDescriptorIO::retry([&] { return ::waitpid(child, &status, 0); }) == child;
    if (isKnown && status != 0) {
        return ZPKFailure(m_parts.program(), "the carried loader does not start it");
    }
    return {};
}

bool ZPKSecondStage::isTrial(int argc, char** argv) {
    return argc > 0 && argv[0] == kTrial;
}

std::vector<std::string> ZPKSecondStage::withoutLoaderVariables(char** environment) {
    std::vector<std::string> variables;
    for (char** entry = environment; *entry != nullptr; ++entry) {
        const std::string variable = *entry;
        variables.push_back(isKeptFromLoader(variable) ? std::string(kHidingPrefix) + variable : variable);
    }
    return variables;
}

void ZPKSecondStage::restoreLoaderVariables(char** environment) {
    for (char** entry = environment; *entry != nullptr; ++entry) {
        if (std::string_view(*entry).starts_with(kHidingPrefix)) {
            *entry += kHidingPrefix.size();
        }
    }
}

bool ZPKSecondStage::suitsKernel(std::string_view release) {
    constexpr std::pair kOldest{3U, 17U};
    const unsigned int major = takeNumber(release);
    return std::pair(major, takeNumber(release)) >= kOldest;
}
