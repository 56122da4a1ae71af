// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSecondStage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <optional>
#include <utility>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFileDescriptor.h"

namespace {

const std::string kLoader = "ld-linux-x86-64.so.2";
const std::string kProgram = "Zephyrkit-desktop";
/// The names of all parts, one a line, made when they were put into the bundle.
const std::string kList = "Parts";
constexpr std::size_t kLongestList = std::size_t{64} * 1024;

constexpr std::string_view kLoaderPrefix = "LD_";
constexpr std::string_view kHidingPrefix = "ZEPHYRKIT_KEPT_";

bool isKeptFromLoader(std::string_view entry) {
    // The second is for a launcher that was started by one: each takes away what it has added.
    return entry.starts_with(kLoaderPrefix) || entry.starts_with(kHidingPrefix);
}

ZPKResult<std::string> contentsOf(const std::string& path) {
    const ZPKFileDescriptor file(
        ZPKDescriptorIO::retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!file.isOpen()) {
        return ZPKFailure::ofSystem(path, errno);
    }
    std::optional<std::string> text = ZPKDescriptorIO::readToEnd(file.get(), kLongestList);
    if (!text) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return std::move(*text);
}

ZPKOutcome findRegularFile(const std::string& path) {
    struct stat attributes;
    if (::stat(path.c_str(), &attributes) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    if (!S_ISREG(attributes.st_mode) || attributes.st_size == 0) {
        return ZPKFailure(path, "not a file with contents");
    }
    return {};
}

ZPKOutcome findProgram(const std::string& path) {
    // Says no as well where the file system lets nothing be executed.
    if (::access(path.c_str(), X_OK) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return findRegularFile(path);
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
        return ZPKFailure(m_frameworks, "made for a newer kernel");
    }
    for (const std::string& program : {kLoader, kProgram}) {
        if (ZPKOutcome found = findProgram(part(program)); !found) {
            return found;
        }
    }
    const ZPKResult<std::string> list = contentsOf(part(kList));
    if (!list) {
        return list.failure();
    }
    std::string_view names = *list;
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find('\n'));
        names.remove_prefix(std::min(name.size() + 1, names.size()));
        if (ZPKOutcome found = findRegularFile(part(std::string(name))); !found) {
            return found;
        }
    }
    return {};
}

ZPKFailure ZPKSecondStage::start(int argc, char** argv, char** environment) const {
    const std::string loader = part(kLoader);
    // The windows take their name and class from the first argument. What the machine's own loader has
    // noted of its libraries does not concern the carried one.
    std::vector<std::string> arguments{loader, "--inhibit-cache", "--argv0", argc > 0 ? argv[0] : kProgram,
                                       part(kProgram)};
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
