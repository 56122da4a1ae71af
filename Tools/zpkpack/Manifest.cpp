// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Manifest.h"

#include <nettle/sha2.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKReplacementFile.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/MadeBundle.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr std::size_t kStep = std::size_t{256} * 1024;
constexpr std::size_t kLargestManifest = std::size_t{16} << 20;
constexpr std::size_t kSumLength = std::size_t{2} * SHA256_DIGEST_SIZE;
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr mode_t kMode = 0644;

std::string hexadecimal(const std::array<std::uint8_t, SHA256_DIGEST_SIZE>& digest) {
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

std::uint64_t sizeOf(const MadePackage& package) {
    std::uint64_t size = 0;
    for (const MadePackage::Item& item : package.items()) {
        size += item.size;
    }
    return size;
}

std::string sumOf(MadePackage& package, const MadePackage::Item& file, std::vector<std::uint8_t>& buffer,
                  Progress* progress) {
    sha256_ctx context;
    ::sha256_init(&context);
    std::uint64_t done = 0;
    while (const std::size_t got = package.read(file, done, buffer.data(), buffer.size())) {
        ::sha256_update(&context, got, buffer.data());
        done += got;
        if (progress != nullptr) {
            progress->advance(got);
        }
    }
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest;
    ::sha256_digest(&context, digest.size(), digest.data());
    return hexadecimal(digest);
}

/// A path as the tool writes it where it would not fit on a line; unchanged otherwise.
std::string escaped(const std::string& path) {
    std::string text;
    for (const char character : path) {
        switch (character) {
            case '\\':
                text += "\\\\";
                break;
            case '\n':
                text += "\\n";
                break;
            case '\r':
                text += "\\r";
                break;
            default:
                text += character;
        }
    }
    return text;
}

/// Nothing when no tool has written it.
std::optional<std::string> unescaped(std::string_view text) {
    std::string path;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '\\') {
            path += text[index];
            continue;
        }
        ++index;
        const std::size_t meaning =
            index < text.size() ? std::string_view("\\nr").find(text[index]) : std::string_view::npos;
        if (meaning == std::string_view::npos) {
            return std::nullopt;
        }
        path += "\\\n\r"[meaning];
    }
    return path;
}

}  // namespace

Manifest Manifest::ofPackage(MadePackage& package, Progress* progress) {
    Manifest manifest;
    if (progress != nullptr) {
        progress->begin("summing up", sizeOf(package));
    }
    std::vector<std::uint8_t> buffer(kStep);
    for (const MadePackage::Item& item : package.items()) {
        if (item.kind == MadePackage::Kind::File && item.path != kPath) {
            manifest.m_entries.push_back({item.path, sumOf(package, item, buffer, progress)});
        }
    }
    return manifest;
}

Manifest Manifest::inPackage(MadePackage& package) {
    Manifest manifest;
    const std::string text = package.contents(kPath, kLargestManifest);
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        manifest.addLine(line, package.nameOf(kPath));
    }
    std::sort(manifest.m_entries.begin(), manifest.m_entries.end(),
              [](const Entry& one, const Entry& other) { return one.path < other.path; });
    return manifest;
}

void Manifest::addLine(std::string_view line, const std::string& name) {
    const bool isEscaped = line.starts_with('\\');
    line.remove_prefix(isEscaped ? 1 : 0);
    const std::string_view sum = line.substr(0, kSumLength);
    const std::string_view mark = line.size() > sum.size() + 2 ? line.substr(sum.size(), 2) : "";
    const bool isSum = sum.find_first_not_of(kDigits) == std::string_view::npos;
    std::optional<std::string> path;
    if (isSum && (mark == "  " || mark == " *")) {
        const std::string_view text = line.substr(sum.size() + mark.size());
        path = isEscaped ? unescaped(text) : std::string(text);
    }
    if (!path) {
        throw PackagerFailure(name, "line " + std::to_string(m_entries.size() + 1) + " is no sum and path");
    }
    m_entries.push_back({std::move(*path), std::string(sum)});
}

void Manifest::write(const std::string& bundle, Progress* progress) {
    const std::string path = ZPKPath::join(bundle, kPath);
    // The template may hold something of the name.
    ZPKFileManager::removeItem(path).ignore();
    MadeBundle package(bundle);
    ZPKResult<ZPKReplacementFile> file = ZPKReplacementFile::forPath(path, kMode);
    if (!file) {
        throw PackagerFailure(file.failure());
    }
    if (!ZPKDescriptorIO::writeWhole(file->descriptor(), ofPackage(package, progress).text()) ||
        ::fchmod(file->descriptor(), kMode) != 0) {
        throw PackagerFailure::ofSystem(path, errno);
    }
    require(file->commit());
}

std::vector<Manifest::Difference> Manifest::differencesTo(const Manifest& found) const {
    using Kind = Difference::Kind;
    std::vector<Difference> differences;
    // Both are in the order of paths.
    auto there = found.m_entries.begin();
    for (const Entry& entry : m_entries) {
        for (; there != found.m_entries.end() && there->path < entry.path; ++there) {
            differences.push_back({Kind::Added, there->path});
        }
        const bool isThere = there != found.m_entries.end() && there->path == entry.path;
        if (!isThere || there->sum != entry.sum) {
            differences.push_back({isThere ? Kind::Changed : Kind::Missing, entry.path});
        }
        there += isThere ? 1 : 0;
    }
    for (; there != found.m_entries.end(); ++there) {
        differences.push_back({Kind::Added, there->path});
    }
    return differences;
}

std::string Manifest::text() const {
    std::string text;
    for (const Entry& entry : m_entries) {
        const std::string path = escaped(entry.path);
        text += (path == entry.path ? "" : "\\") + entry.sum + "  " + path + "\n";
    }
    return text;
}

}  // namespace zpk_packager
