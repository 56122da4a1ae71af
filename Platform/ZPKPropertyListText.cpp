// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKUnicode.h"
#include "Platform/ZPKPropertyListNode.h"

namespace {

using Node = ZPKPropertyList::Node;

bool isSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// More than 15 for what is no hexadecimal digit.
std::size_t digitValue(char character) {
    const bool isCapital = character >= 'A' && character <= 'F';
    return std::string_view("0123456789abcdef")
        .find(static_cast<char>(isCapital ? character | 0x20 : character));
}

bool isHexadecimalDigit(char character) {
    return digitValue(character) < 16;
}

bool isUnquotedCharacter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_' || character == '$' ||
           character == '/' || character == ':' || character == '.' || character == '-';
}

/// Reads the text form. Each operation leaves the reader behind what it read, and answers false or
/// nothing at the first error, after which nothing more is read.
class TextReader {
public:
    TextReader(std::string_view text, std::vector<ZPKPropertyList::KeyPlace>* keys)
        : m_text(text), m_keys(keys) {}

    std::optional<Node> readRoot();
    std::size_t place() const { return m_at; }

private:
    bool atEnd() const { return m_at == m_text.size(); }
    char current() const { return m_text[m_at]; }
    bool startsWith(std::string_view text) const { return m_text.substr(m_at).starts_with(text); }

    bool skipSpaceAndComments();
    bool accept(char character);
    bool readPairs(Node& dictionary);
    bool readPair(Node& dictionary);
    std::optional<Node::Value> readValue();
    std::optional<Node::Value> readArray();
    std::optional<Node::Value> readDictionary();
    std::optional<Node::Value> readData();
    std::optional<std::string> readString();
    std::optional<std::string> readQuoted(char quote);
    bool readEscape(std::string& outText);
    bool readUnicodeEscape(std::string& outText);
    std::optional<char32_t> readNumber(unsigned base, std::size_t mostDigits);
    std::optional<char32_t> readCodeUnit() { return readNumber(16, 4); }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_depth = 0;
    std::vector<ZPKPropertyList::KeyPlace>* m_keys;
};

std::optional<Node> TextReader::readRoot() {
    Node root;
    if (!skipSpaceAndComments()) {
        return std::nullopt;
    }
    const bool inBraces = accept('{');
    if (!readPairs(root) || (inBraces && (!accept('}') || !skipSpaceAndComments())) || !atEnd()) {
        return std::nullopt;
    }
    return root;
}

bool TextReader::skipSpaceAndComments() {
    while (!atEnd()) {
        if (isSpace(current())) {
            ++m_at;
        } else if (startsWith("//")) {
            const std::size_t end = m_text.find_first_of("\r\n", m_at);
            m_at = end == std::string_view::npos ? m_text.size() : end;
        } else if (startsWith("/*")) {
            const std::size_t end = m_text.find("*/", m_at + 2);
            if (end == std::string_view::npos) {
                return false;
            }
            m_at = end + 2;
        } else {
            break;
        }
    }
    return true;
}

bool TextReader::accept(char character) {
    if (atEnd() || current() != character) {
        return false;
    }
    ++m_at;
    return true;
}

/// Pairs up to the end of the text or a "}", which is left to be read.
bool TextReader::readPairs(Node& dictionary) {
    while (skipSpaceAndComments()) {
        if (atEnd() || current() == '}') {
            return true;
        }
        if (!readPair(dictionary)) {
            return false;
        }
    }
    return false;
}

bool TextReader::readPair(Node& dictionary) {
    const std::size_t start = m_at;
    std::optional<std::string> key = readString();
    if (!key || !skipSpaceAndComments() || !accept('=') || !skipSpaceAndComments()) {
        return false;
    }
    std::optional<Node::Value> value = readValue();
    if (!value || !skipSpaceAndComments() || !accept(';')) {
        return false;
    }
    if (m_keys != nullptr && m_depth == 0) {
        m_keys->push_back({*key, start});
    }
    dictionary.values.insert_or_assign(std::move(*key), std::move(*value));
    return true;
}

std::optional<Node::Value> TextReader::readValue() {
    if (atEnd() || m_depth == Node::kDeepestNesting) {
        return std::nullopt;
    }
    ++m_depth;
    std::optional<Node::Value> value;
    if (accept('(')) {
        value = readArray();
    } else if (accept('{')) {
        value = readDictionary();
    } else if (accept('<')) {
        value = readData();
    } else {
        value = readString();
    }
    --m_depth;
    return value;
}

std::optional<Node::Value> TextReader::readArray() {
    Node::Strings strings;
    while (skipSpaceAndComments()) {
        if (accept(')')) {
            return strings;
        }
        std::optional<Node::Value> element = readValue();
        if (!element || !skipSpaceAndComments()) {
            return std::nullopt;
        }
        if (std::string* const string = std::get_if<std::string>(&*element)) {
            strings.push_back(std::move(*string));
        }
        if (!accept(',') && (atEnd() || current() != ')')) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<Node::Value> TextReader::readDictionary() {
    Node dictionary;
    if (!readPairs(dictionary) || !accept('}')) {
        return std::nullopt;
    }
    return Node::Other{};
}

std::optional<Node::Value> TextReader::readData() {
    std::size_t digits = 0;
    while (!atEnd() && (isHexadecimalDigit(current()) || isSpace(current()))) {
        digits += isHexadecimalDigit(current()) ? 1U : 0U;
        ++m_at;
    }
    if (digits % 2 != 0 || !accept('>')) {
        return std::nullopt;
    }
    return Node::Other{};
}

std::optional<std::string> TextReader::readString() {
    for (const char quote : {'"', '\''}) {
        if (accept(quote)) {
            return readQuoted(quote);
        }
    }
    const std::size_t start = m_at;
    while (!atEnd() && isUnquotedCharacter(current()) && !startsWith("//") && !startsWith("/*")) {
        ++m_at;
    }
    if (m_at == start) {
        return std::nullopt;
    }
    return std::string(m_text.substr(start, m_at - start));
}

std::optional<std::string> TextReader::readQuoted(char quote) {
    std::string text;
    while (!atEnd()) {
        const char character = current();
        ++m_at;
        if (character == quote) {
            return text;
        }
        if (character == '\0' || (character == '\\' && !readEscape(text))) {
            return std::nullopt;
        }
        if (character != '\\') {
            text += character;
        }
    }
    return std::nullopt;
}

bool TextReader::readEscape(std::string& outText) {
    if (atEnd()) {
        return false;
    }
    if (const std::optional<char32_t> number = readNumber(8, 3)) {
        ZPKUnicode::append(outText, *number);
        return true;
    }
    const char character = current();
    ++m_at;
    if (character == 'U' || character == 'u') {
        return readUnicodeEscape(outText);
    }
    constexpr std::string_view kLetters = "abfnrtv";
    constexpr std::string_view kMeanings = "\a\b\f\n\r\t\v";
    const std::size_t letter = kLetters.find(character);
    outText += letter == std::string_view::npos ? character : kMeanings[letter];
    return true;
}

bool TextReader::readUnicodeEscape(std::string& outText) {
    const std::optional<char32_t> unit = readCodeUnit();
    if (!unit) {
        return false;
    }
    char32_t codePoint = *unit;
    if (ZPKUnicode::isHighSurrogate(codePoint) && (startsWith("\\U") || startsWith("\\u"))) {
        const std::size_t start = m_at;
        m_at += 2;
        const std::optional<char32_t> low = readCodeUnit();
        if (low && ZPKUnicode::isLowSurrogate(*low)) {
            codePoint = ZPKUnicode::joinSurrogates(codePoint, *low);
        } else {
            m_at = start;
        }
    }
    ZPKUnicode::append(outText, codePoint);
    return true;
}

std::optional<char32_t> TextReader::readNumber(unsigned base, std::size_t mostDigits) {
    char32_t number = 0;
    std::size_t digits = 0;
    for (; digits < mostDigits && !atEnd() && digitValue(current()) < base; ++digits, ++m_at) {
        number = number * base + static_cast<char32_t>(digitValue(current()));
    }
    return digits > 0 ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<ZPKPropertyList::Node> ZPKPropertyList::Node::fromText(std::string_view text,
                                                                     std::size_t* outErrorAt,
                                                                     std::vector<KeyPlace>* outKeys) {
    TextReader reader(text, outKeys);
    std::optional<Node> root = reader.readRoot();
    if (!root && outErrorAt != nullptr) {
        *outErrorAt = reader.place();
    }
    return root;
}
