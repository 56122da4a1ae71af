// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKProcess.h"

#include <limits.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKKernelFile.h"

namespace {

constexpr std::string_view kSelf = "self";

/// What this program was started as, which the kernel has told it: for a machine without /proc.
std::optional<std::string> pathAtStart() {
    // The kernel gives every such value as a number.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    const auto* const name = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
    const std::unique_ptr<char, decltype(&std::free)> path(
        name == nullptr ? nullptr : ::realpath(name, nullptr), &std::free);
    return path ? std::optional<std::string>(path.get()) : std::nullopt;
}

}  // namespace

std::vector<pid_t> ZPKProcess::identifiers() {
    std::vector<std::string> names;
    // Without a list there is nothing to tell.
    ZPKFileManager::contentsOfFolder("/proc", names).ignore();
    std::vector<pid_t> identifiers;
    for (const std::string& name : names) {
        pid_t identifier = 0;
        const char* const end = name.data() + name.size();
        const auto [stop, error] = std::from_chars(name.data(), end, identifier);
        if (error == std::errc() && stop == end) {
            identifiers.push_back(identifier);
        }
    }
    std::sort(identifiers.begin(), identifiers.end());
    return identifiers;
}

std::optional<uid_t> ZPKProcess::effectiveUser(pid_t process) {
    // Not by the owner of the process's folder: that is root wherever a process has shut itself off.
    constexpr std::string_view kLine = "\nUid:\t";
    const std::string text =
        ZPKKernelFile::contents("/proc/" + std::to_string(process) + "/status").value_or("");
    const std::size_t line = text.find(kLine);
    const std::size_t real = line == std::string::npos ? line : line + kLine.size();
    const std::size_t effective = text.find('\t', real);
    uid_t user = 0;
    if (effective == std::string::npos ||
        std::from_chars(text.data() + effective + 1, text.data() + text.size(), user).ec != std::errc()) {
        return std::nullopt;
    }
    return user;
}

std::optional<std::string> ZPKProcess::executablePath(const std::string& process) {
    const std::string link = "/proc/" + process + "/exe";
    std::string path(PATH_MAX, '\0');
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    if (length <= 0 || path[0] != '/') {
        return process == kSelf ? pathAtStart() : std::nullopt;
    }
    path.resize(static_cast<std::size_t>(length));
    // The kernel's mark for a file that is no longer at this path; it may also be part of a name.
    const std::string mark = " (deleted)";
    if (path.ends_with(mark) && !ZPKFileManager::fileExists(path)) {
        path.resize(path.size() - mark.size());
    }
    return path;
}
