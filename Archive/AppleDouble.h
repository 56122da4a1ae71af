// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zpk_archive {

/// A file's extended attributes by name, without the "user." that Linux puts before each. Values are bytes.
using AttributeMap = std::map<std::string, std::string>;

/// The two attributes that have places of their own in an AppleDouble file.
inline constexpr char kFinderInfoName[] = "com.apple.FinderInfo";
inline constexpr char kResourceForkName[] = "com.apple.ResourceFork";

/// What the name of an AppleDouble file has before the name of the file whose attributes it carries.
inline constexpr std::string_view kAppleDoublePrefix = "._";

/// Longest attribute name that the format's table and Linux can both hold.
constexpr std::size_t kAttributeNameLimit = 250;

/// Larger files are not looked into: they are held in memory whole.
constexpr std::size_t kAppleDoubleLimit = std::size_t{4} << 20;

/// The contents of the AppleDouble file (version 2) that carries the attributes: a Finder info entry
/// (32 bytes, then the "ATTR" table) and a resource fork entry.
std::string encodeAppleDouble(const AttributeMap& attributes);

/// The attributes in an AppleDouble file; nothing when the bytes are no valid one.
std::optional<AttributeMap> decodeAppleDouble(std::string_view bytes);

}  // namespace zpk_archive
