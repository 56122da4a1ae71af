// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPropertyList.h"

#include <algorithm>

#include "Base/ZPKUnicode.h"
#include "Platform/ZPKFileHandle.h"
#include "Platform/ZPKPropertyListNode.h"

namespace {

// Lists of installed software are thousands of times smaller.
constexpr std::size_t kLargestFile = std::size_t{64} * 1024 * 1024;

}  // namespace

ZPKPropertyList::ZPKPropertyList(std::unique_ptr<Node> root) : m_root(std::move(root)) {}
ZPKPropertyList::ZPKPropertyList(ZPKPropertyList&&) noexcept = default;
ZPKPropertyList& ZPKPropertyList::operator=(ZPKPropertyList&&) noexcept = default;
ZPKPropertyList::~ZPKPropertyList() = default;

std::optional<ZPKPropertyList> ZPKPropertyList::dictionaryWithContentsOfFile(const std::string& path) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    if (!file) {
        return std::nullopt;
    }
    const ZPKResult<std::string> bytes = file->contents(kLargestFile);
    return bytes ? dictionaryWithBytes(*bytes) : std::nullopt;
}

std::optional<ZPKPropertyList> ZPKPropertyList::dictionaryWithBytes(std::string_view bytes) {
    std::optional<Node> root;
    if (bytes.starts_with("bplist")) {
        root = Node::fromBinary(bytes);
    } else if (const std::optional<std::string> text = ZPKUnicode::utf8FromMarkedText(bytes)) {
        const std::size_t first = text->find_first_not_of(" \t\r\n");
        const bool isXML = first != std::string::npos && (*text)[first] == '<';
        root = isXML ? Node::fromXML(*text) : Node::fromText(*text);
    }
    if (!root) {
        return std::nullopt;
    }
    return ZPKPropertyList(std::make_unique<Node>(std::move(*root)));
}

std::optional<ZPKPropertyList> ZPKPropertyList::dictionaryWithText(std::string_view text,
                                                                   std::size_t& outErrorAt,
                                                                   std::vector<KeyPlace>* outKeys) {
    std::optional<Node> root = Node::fromText(text, &outErrorAt, outKeys);
    if (!root) {
        return std::nullopt;
    }
    return ZPKPropertyList(std::make_unique<Node>(std::move(*root)));
}

std::vector<std::string> ZPKPropertyList::keys() const {
    std::vector<std::string> keys;
    for (const auto& [key, value] : m_root->values) {
        keys.push_back(key);
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

std::optional<std::string> ZPKPropertyList::stringForKey(const std::string& key) const {
    const auto found = m_root->values.find(key);
    if (found == m_root->values.end()) {
        return std::nullopt;
    }
    const std::string* const value = std::get_if<std::string>(&found->second);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<std::vector<std::string>> ZPKPropertyList::stringArrayForKey(const std::string& key) const {
    const auto found = m_root->values.find(key);
    if (found == m_root->values.end()) {
        return std::nullopt;
    }
    const Node::Strings* const value = std::get_if<Node::Strings>(&found->second);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}
