// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

namespace varno_zpk {

// The names in the description files, compared byte by byte. Root elements are accepted under any
// name, so `TAG_UPDATEINFO` and `TAG_LANGUAGES` serve only those who write the files.

inline constexpr std::string_view TAG_UPDATEINFO = "UpdateInfo";
inline constexpr std::string_view TAG_CONDITIONS = "Conditions";
inline constexpr std::string_view TAG_TARGETITEMS = "TargetItems";
inline constexpr std::string_view TAG_REGISTRY = "Registry";
inline constexpr std::string_view TAG_UIMLOG = "UIMLog";
inline constexpr std::string_view TAG_UNINSTALLXML = "UninstallXml";
inline constexpr std::string_view TAG_ITEMINFO = "ItemInfo";
inline constexpr std::string_view TAG_DISC = "Disc";
inline constexpr std::string_view TAG_LANGUAGES = "Languages";
inline constexpr std::string_view TAG_LANGUAGE = "Language";

inline constexpr std::string_view ATTR_XMLVERSION = "XmlVersion";
inline constexpr std::string_view ATTR_KEYNAME = "KeyName";
inline constexpr std::string_view ATTR_SIGNATURE = "Signature";
inline constexpr std::string_view ATTR_APPNAME = "AppName";
inline constexpr std::string_view ATTR_DISPLAYNAME = "DisplayName";
inline constexpr std::string_view ATTR_EXEC = "Exec";
inline constexpr std::string_view ATTR_PARAM = "Param";
inline constexpr std::string_view ATTR_FILEPATH = "FilePath";
inline constexpr std::string_view ATTR_FALLBACKCODE = "FallBackCode";
inline constexpr std::string_view ATTR_CODE = "Code";

}  // namespace varno_zpk
