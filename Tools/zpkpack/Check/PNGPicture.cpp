// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/PNGPicture.h"

#include <libdeflate.h>

#include <cstddef>

namespace zpk_packager {

namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
constexpr std::size_t kNumber = 4;
constexpr std::size_t kHeaderSize = 13;

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(at, kNumber)) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

/// The part at the beginning of `rest`, its kind and its contents, which is taken away with its length and
/// its sum; empty when it is damaged.
std::string_view takePart(std::string_view& rest) {
    if (rest.size() < 3 * kNumber || numberAt(rest, 0) > rest.size() - 3 * kNumber) {
        return {};
    }
    const std::string_view part = rest.substr(kNumber, kNumber + numberAt(rest, 0));
    const std::uint32_t sum = numberAt(rest, kNumber + part.size());
    rest.remove_prefix(2 * kNumber + part.size());
    return ::libdeflate_crc32(0, part.data(), part.size()) == sum ? part : std::string_view();
}

}  // namespace

ZPKResult<PNGPicture> PNGPicture::read(std::string_view bytes, const std::string& path) {
    if (!bytes.starts_with(kSignature)) {
        return ZPKFailure(path, "it is no PNG picture");
    }
    bytes.remove_prefix(kSignature.size());
    PNGPicture picture;
    bool hasPoints = false;
    for (std::string_view part = takePart(bytes); !part.empty(); part = takePart(bytes)) {
        if (part.starts_with("IHDR") && part.size() == kNumber + kHeaderSize) {
            picture.width = numberAt(part, kNumber);
            picture.height = numberAt(part, 2 * kNumber);
        }
        hasPoints = hasPoints || part.starts_with("IDAT");
        if (part.starts_with("IEND") && picture.width != 0 && picture.height != 0 && hasPoints) {
            return picture;
        }
    }
    return ZPKFailure(path, "it is a damaged PNG picture");
}

}  // namespace zpk_packager
