// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPropertyListXMLGuard.h"

#include <algorithm>

namespace {

/// Copies an XML text without what only a full parser would have to understand.
class XMLSimplifier {
public:
    XMLSimplifier(std::string_view text, std::size_t deepest, std::size_t mostKeys)
        : m_text(text), m_deepest(deepest), m_keysLeft(mostKeys) {}

    std::optional<std::string> run() {
        while (m_at < m_text.size()) {
            if (!step()) {
                return std::nullopt;
            }
        }
        return m_depth == 0 ? std::optional(std::move(m_plain)) : std::nullopt;
    }

private:
    bool startsWith(std::string_view text) const { return m_text.substr(m_at).starts_with(text); }

    bool step() {
        if (m_text[m_at] != '<') {
            return copyText();
        }
        if (startsWith("<!--")) {
            return skipThrough("-->", 4);
        }
        if (startsWith("<?")) {
            return skipThrough("?>", 2);
        }
        if (startsWith("<![CDATA[")) {
            return copyCharacterData();
        }
        if (startsWith("<!")) {
            return skipDocumentType();
        }
        return copyTag();
    }

    bool copyText() {
        const std::size_t end = std::min(m_text.find('<', m_at), m_text.size());
        m_plain.append(m_text.substr(m_at, end - m_at));
        m_at = end;
        return true;
    }

    bool skipThrough(std::string_view closer, std::size_t openerLength) {
        const std::size_t end = m_text.find(closer, m_at + openerLength);
        m_at = end == std::string_view::npos ? m_text.size() : end + closer.size();
        return end != std::string_view::npos;
    }

    bool copyCharacterData() {
        constexpr std::size_t kOpenerLength = 9;
        const std::size_t start = m_at + kOpenerLength;
        if (!skipThrough("]]>", kOpenerLength)) {
            return false;
        }
        for (const char character : m_text.substr(start, m_at - 3 - start)) {
            appendEscaped(character);
        }
        return true;
    }

    void appendEscaped(char character) {
        switch (character) {
            case '<':
                m_plain += "&lt;";
                break;
            case '>':
                m_plain += "&gt;";
                break;
            case '&':
                m_plain += "&amp;";
                break;
            default:
                m_plain += character;
        }
    }

    /// A document type ends at its ">"; one with declarations of its own has no place in a property list.
    bool skipDocumentType() {
        const std::size_t end = m_text.find_first_of("[>", m_at);
        return end != std::string_view::npos && m_text[end] == '>' && skipThrough(">", 2);
    }

    bool copyTag() {
        const std::size_t end = m_text.find_first_of("<>", m_at + 1);
        if (end == std::string_view::npos || m_text[end] == '<') {
            return false;
        }
        const std::string_view tag = m_text.substr(m_at, end + 1 - m_at);
        m_plain.append(tag);
        m_at = end + 1;
        if (tag.starts_with("</")) {
            return m_depth-- > 0;
        }
        if (tag.starts_with("<key") && m_keysLeft-- == 0) {
            return false;
        }
        // One level more than the nesting of values: the list's own element.
        return tag.ends_with("/>") || m_depth++ <= m_deepest;
    }

    std::string_view m_text;
    std::size_t m_deepest;
    std::size_t m_keysLeft;
    std::size_t m_at = 0;
    std::size_t m_depth = 0;
    std::string m_plain;
};

}  // namespace

std::optional<std::string> ZPKPropertyListXMLGuard::plainText(std::string_view text, std::size_t deepest,
                                                              std::size_t mostKeys) {
    return XMLSimplifier(text, deepest, mostKeys).run();
}
