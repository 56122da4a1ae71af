// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKMountTable.h"

#include <algorithm>

#include "Base/ZPKPath.h"
#include "Platform/ZPKKernelDevice.h"
#include "Platform/ZPKKernelFile.h"

namespace {

bool isOctalDigit(char character) {
    return character >= '0' && character <= '7';
}

/// True when `text` has a backslash and the three digits of a byte at `at`.
bool isEscape(std::string_view text, std::size_t at) {
    return text[at] == '\\' && text.size() - at > 3 && text[at + 1] <= '3' && isOctalDigit(text[at + 1]) &&
           isOctalDigit(text[at + 2]) && isOctalDigit(text[at + 3]);
}

/// The kernel writes blanks, tabulators, line ends and backslashes so that they cannot part a line.
std::string withoutEscapes(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isEscape(text, at)) {
            plain += static_cast<char>((text[at + 1] - '0') * 64 + (text[at + 2] - '0') * 8 +
                                       (text[at + 3] - '0'));
            at += 3;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

/// A line: two numbers, the device, the mounted folder, the mount point and options; then any number
/// of marks up to a "-"; then the kind of the file system, the source, which may be empty, and more
/// options.
std::optional<ZPKMount> mountOfLine(std::string_view line) {
    constexpr std::ptrdiff_t kDevice = 2;
    constexpr std::ptrdiff_t kTarget = 4;
    constexpr std::ptrdiff_t kFirstMark = 6;
    constexpr std::ptrdiff_t kSourceBehindMarks = 2;
    const std::vector<std::string_view> fields = ZPKKernelFile::split(line, ' ');
    if (std::ssize(fields) <= kFirstMark) {
        return std::nullopt;
    }
    const auto endOfMarks = std::find(fields.begin() + kFirstMark, fields.end(), "-");
    const std::optional<dev_t> device = ZPKKernelDevice::numberOfText(fields[kDevice]);
    if (!device || !fields[kTarget].starts_with('/') || fields.end() - endOfMarks <= kSourceBehindMarks) {
        return std::nullopt;
    }
    return ZPKMount{withoutEscapes(endOfMarks[kSourceBehindMarks]), withoutEscapes(fields[kTarget]), *device};
}

}  // namespace

ZPKMountTable ZPKMountTable::current() {
    return ZPKMountTable("/proc/self/mountinfo");
}

ZPKMountTable::ZPKMountTable(const std::string& file) {
    const std::optional<std::string> text = ZPKKernelFile::contents(file);
    if (!text) {
        return;
    }
    // One broken line must not hide the rest.
    for (const std::string_view line : ZPKKernelFile::split(*text, '\n')) {
        if (std::optional<ZPKMount> mount = mountOfLine(line)) {
            m_mounts.push_back(std::move(*mount));
        }
    }
}

std::optional<ZPKMount> ZPKMountTable::mountOfPath(const std::string& path) const {
    const std::string item = ZPKPath::resolved(path);
    if (item.empty()) {
        return std::nullopt;
    }
    // The deepest mount point counts, and of several mounts on one point the last.
    const ZPKMount* best = nullptr;
    for (const ZPKMount& mount : m_mounts) {
        if (ZPKPath::isSameOrInside(item, mount.target) &&
            (best == nullptr || mount.target.size() >= best->target.size())) {
            best = &mount;
        }
    }
    return best == nullptr ? std::nullopt : std::optional(*best);
}
