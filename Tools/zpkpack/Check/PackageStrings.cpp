// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/PackageStrings.h"

#include <algorithm>
#include <utility>

#include "Base/ZPKPath.h"
#include "Base/ZPKUnicode.h"
#include "Platform/ZPKFileHandle.h"

namespace zpk_packager {

namespace {

constexpr const char* kBlanks = " \t";

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

ZPKResult<PackageStrings> PackageStrings::read(const std::string& path) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    if (!file) {
        return file.failure();
    }
    const ZPKResult<std::string> bytes = file->contents(kLargestFile);
    if (!bytes) {
        return bytes.failure();
    }
    std::optional<std::string> text = ZPKUnicode::utf8FromMarkedText(*bytes);
    if (!text) {
        return ZPKFailure(path, "it is neither UTF-8 nor UTF-16 with a byte order mark");
    }
    return PackageStrings(std::move(*text));
}

PackageStrings::PackageStrings(std::string text) : m_text(std::move(text)) {
    std::size_t at = 0;
    while (at < m_text.size()) {
        if (m_text[at] != '#') {
            at = skipToken(at);
            continue;
        }
        const std::size_t end = std::min(m_text.find_first_of("\r\n", at), m_text.size());
        takeComment(at, end);
        at = end;
    }
}

/// Where what begins at `at` ends: a quoted text, a comment of the list itself, or a character.
std::size_t PackageStrings::skipToken(std::size_t at) const {
    std::size_t end = at + 1;
    if (m_text[at] == '"' || m_text[at] == '\'') {
        while (end < m_text.size() && m_text[end] != m_text[at]) {
            end += m_text[end] == '\\' ? 2U : 1U;
        }
        return end + 1;
    }
    if (m_text.compare(at, 2, "//") == 0) {
        return m_text.find_first_of("\r\n", at);
    }
    if (m_text.compare(at, 2, "/*") == 0) {
        end = m_text.find("*/", at + 2);
        return end == std::string::npos ? end : end + 2;
    }
    return end;
}

std::size_t PackageStrings::offsetOfKey(std::string_view key) const {
    const std::string_view text = m_text;
    for (std::size_t at = 0; at < text.size(); at = skipToken(at)) {
        const std::size_t start = text[at] == '"' || text[at] == '\'' ? at + 1 : at;
        std::string_view rest = text.substr(start);
        if (!rest.starts_with(key)) {
            continue;
        }
        rest.remove_prefix(key.size());
        rest.remove_prefix(start == at || rest.empty() ? 0 : 1);
        rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n"), rest.size()));
        if (rest.starts_with('=')) {
            return at;
        }
    }
    return text.size();
}

void PackageStrings::takeComment(std::size_t at, std::size_t end) {
    m_comments.push_back({trimmed(m_text.substr(at + 1, end - at - 1)), at});
    m_text.replace(at, end - at, end - at, ' ');
}

std::optional<ZPKPropertyList> PackageStrings::entries(std::size_t& outErrorAt) const {
    return ZPKPropertyList::dictionaryWithText(m_text, outErrorAt);
}

std::string PackageStrings::faultOfValue(const std::string& value) {
    if (value.empty()) {
        return "is missing";
    }
    const bool isName = std::none_of(value.begin(), value.end(), [](char character) {
        return static_cast<unsigned char>(character) < 0x20 || character == '/';
    });
    return isName ? "" : "holds a slash or a control character, which no name may hold";
}

std::string PackageStrings::faultOfTitle(const std::string& title) {
    const auto isControl = [](char character) {
        return static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
    };
    if (std::any_of(title.begin(), title.end(), isControl)) {
        return "holds a control character";
    }
    const auto characters = std::count_if(title.begin(), title.end(), [](char character) {
        return (static_cast<unsigned char>(character) & 0xc0U) != 0x80U;
    });
    return static_cast<std::size_t>(characters) <= kLongestTitle
               ? ""
               : "is longer than " + std::to_string(kLongestTitle) + " characters";
}

std::string PackageStrings::faultOfIdentifier(const std::string& identifier, const std::string& name) {
    if (ZPKPath::extension(identifier) == name) {
        return "";
    }
    return "the last part of the identifier \"" + identifier + "\" must be the bundle name \"" + name + "\"";
}

}  // namespace zpk_packager
