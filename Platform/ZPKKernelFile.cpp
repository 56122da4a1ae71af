// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKKernelFile.h"

#include <dirent.h>
#include <fcntl.h>

#include <memory>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFileDescriptor.h"

namespace {

// The mount table of a machine with ten thousand containers has a tenth of it.
constexpr std::size_t kLargestText = std::size_t{16} * 1024 * 1024;

struct FolderClose {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

}  // namespace

std::optional<std::string> ZPKKernelFile::contents(const std::string& path) {
    const ZPKFileDescriptor file(
        ZPKDescriptorIO::retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    return file.isOpen() ? ZPKDescriptorIO::readToEnd(file.get(), kLargestText) : std::nullopt;
}

std::vector<std::string> ZPKKernelFile::namesInFolder(const std::string& path) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, FolderClose> folder(::opendir(path.c_str()));
    if (!folder) {
        return names;
    }
    while (const dirent* const entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    return names;
}

std::vector<std::string_view> ZPKKernelFile::split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}
