// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSecondStage.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <utility>

namespace {

constexpr std::string_view kLoaderPrefix = "LD_";
constexpr std::string_view kHidingPrefix = "ZEPHYRKIT_KEPT_";

bool isKeptFromLoader(std::string_view entry) {
    // The second is for a launcher that was started by one: each takes away what it has added.
    return entry.starts_with(kLoaderPrefix) || entry.starts_with(kHidingPrefix);
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

/// The number at the beginning of `text`, which is taken away with the character behind it.
unsigned int takeNumber(std::string_view& text) {
    unsigned int number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const auto length = static_cast<std::size_t>(stop - text.data());
    text.remove_prefix(std::min(length + 1, text.size()));
    return error == std::errc() ? number : 0;
}

}  // namespace

ZPKOutcome ZPKSecondStage::probe() const {
    struct utsname system;
    if (::uname(&system) == 0 && !suitsKernel(system.release)) {
        return ZPKFailure(m_parts.folder(), "made for a newer kernel");
    }
    return m_parts.find();
}

ZPKFailure ZPKSecondStage::start(int argc, char** argv, char** environment) const {
    const std::string loader = m_parts.loader();
    // The windows take their name and class from the first argument. What the machine's own loader has
    // noted of its libraries does not concern the carried one.
    std::vector<std::string> arguments{loader, "--inhibit-cache", "--argv0",
                                       argc > 0 ? argv[0] : m_parts.program(), m_parts.program()};
    for (int index = 1; index < argc; ++index) {
        arguments.emplace_back(argv[index]);
    }
    std::vector<std::string> variables = withoutLoaderVariables(environment);
    ::execve(loader.c_str(), pointersTo(arguments).data(), pointersTo(variables).data());
    return ZPKFailure::ofSystem(loader, errno);
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
