// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKPropertyList.h"

namespace zpk_packager {

/// The text of `Package.strings`: a text property list that may also hold comments from a `#` to the end of
/// the line, which say something to the packager.
class PackageStrings {
public:
    /// Bytes. A longer file is refused.
    static constexpr std::size_t kLargestFile = std::size_t{1} << 20;

    static constexpr const char* kNameKey = "CFBundleName";
    static constexpr const char* kIdentifierKey = "CFBundleIdentifier";

    static constexpr const char* kTitleKey = ZPKBundle::kDisplayNameKey;

    /// In characters.
    static constexpr std::size_t kLongestTitle = 100;

    /// Why a value of one of the first two keys cannot be used; empty where it can.
    static std::string faultOfValue(const std::string& value);

    /// Why an identifier does not fit a name; empty where it does.
    static std::string faultOfIdentifier(const std::string& identifier, const std::string& name);

    /// Why people cannot read a name in one line; empty where they can, also of an empty one.
    static std::string faultOfTitle(const std::string& title);

    struct Comment {
        /// Without the `#` and the blanks around it.
        std::string text;
        /// Of the `#`, in bytes from the start of the text.
        std::size_t offset;
    };

    /// The file at `path`; a failure when it cannot be read or is neither UTF-8 nor UTF-16 with a mark.
    static ZPKResult<PackageStrings> read(const std::string& path);

    /// In UTF-8; blanks stand where the `#` comments were.
    const std::string& text() const { return m_text; }

    const std::vector<Comment>& comments() const { return m_comments; }

    /// Where the entry with this key begins, in bytes from the start of the text; the text's end where there
    /// is none.
    std::size_t offsetOfKey(std::string_view key) const;

    /// The entries; nothing when the text is malformed, and then `outErrorAt` is where, in bytes from the
    /// start of the text.
    std::optional<ZPKPropertyList> entries(std::size_t& outErrorAt) const;

private:
    explicit PackageStrings(std::string text);
    std::size_t skipToken(std::size_t at) const;
    void takeComment(std::size_t at, std::size_t end);

    std::string m_text;
    std::vector<Comment> m_comments;
};

}  // namespace zpk_packager
