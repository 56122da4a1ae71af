// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Description/CLanguagesType.h"
#include "Description/CStartupType.h"
#include "Description/CUpdateInfoType.h"

namespace varno_zpk {

/// Reads the description files. A file that is missing, malformed, incomplete or too large gives an
/// empty result, as do an item that is no regular file and memory exhaustion: nothing is thrown and
/// nothing is reported. Main thread only.
class CZPKXMLLoader {
public:
    CZPKXMLLoader() = delete;

    /// Bytes. No description comes near it; a larger file counts as malformed.
    static constexpr std::uint64_t kLargestDescription = std::uint64_t{16} << 20;

    /// Owned by the caller; null on failure.
    static CUpdateInfoType* LoadConditionXML(const std::string& path);
    /// Owned by the caller; null on failure.
    static CStartupType* LoadStartupXML(const std::string& path);
    static std::unique_ptr<const CLanguagesType> LoadLanguagesXML(const std::string& path);
};

}  // namespace varno_zpk
