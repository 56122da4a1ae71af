// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/POReader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Base/ZPKUnicode.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr const char* kNoText = "a text lacks its quotation mark";

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

std::string inCapitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char each) {
        return each >= 'a' && each <= 'z' ? static_cast<char>(each - 'a' + 'A') : each;
    });
    return text;
}

/// The value of a digit; 16 for what is none.
unsigned int digit(char each) {
    if (each >= '0' && each <= '9') {
        return static_cast<unsigned int>(each - '0');
    }
    if (each >= 'a' && each <= 'f') {
        return static_cast<unsigned int>(each - 'a') + 10;
    }
    return each >= 'A' && each <= 'F' ? static_cast<unsigned int>(each - 'A') + 10 : 16;
}

}  // namespace

POReader::POReader(std::string path, std::string_view bytes) : m_path(std::move(path)), m_bytes(bytes) {}

POFile POReader::read() {
    checkBytes();
    for (std::string_view rest = m_bytes; !rest.empty();) {
        ++m_line;
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        readLine(withoutBlanks(line));
    }
    if (m_part != Part::None) {
        finishMessage();
    }
    m_line = std::max<std::size_t>(m_line, 1);
    if (!m_hasHeader) {
        fail("there is no header, which tells charset and language");
    }
    m_file.lines = m_line;
    return std::move(m_file);
}

void POReader::checkBytes() {
    std::size_t line = 1;
    std::string_view rest = m_bytes;
    char32_t character = 0;
    while (const std::size_t length = ZPKUnicode::decode(rest, character)) {
        if (character == 0) {
            fail("there is a null character", line);
        }
        line += character == '\n' ? 1 : 0;
        rest.remove_prefix(length);
    }
    if (!rest.empty()) {
        fail("the bytes from here on are no UTF-8", line);
    }
}

void POReader::readLine(std::string_view line) {
    if (line.empty()) {
        return;
    }
    if (line.front() == '#') {
        readComment(line);
    } else if (line.front() == '"') {
        if (m_part == Part::None) {
            fail("a text stands without msgctxt, msgid or msgstr");
        }
        readStrings(line);
    } else {
        readKeyword(line);
    }
}

void POReader::readComment(std::string_view line) {
    if (m_part == Part::Text) {
        finishMessage();
    }
    if (!line.starts_with("#,") || m_part != Part::None) {
        return;
    }
    for (line.remove_prefix(2); !line.empty();) {
        const std::string_view flag = line.substr(0, line.find(','));
        const std::string_view word = withoutBlanks(flag);
        m_isNextFuzzy = m_isNextFuzzy || word.substr(0, word.find_first_of(kBlanks)) == "fuzzy";
        line.remove_prefix(std::min(flag.size() + 1, line.size()));
    }
}

void POReader::readKeyword(std::string_view line) {
    constexpr std::array<std::pair<std::string_view, Part>, 3> kKeywords = {
        {{"msgctxt", Part::Context}, {"msgid", Part::Id}, {"msgstr", Part::Text}}};
    const std::string_view word = line.substr(0, line.find_first_of(" \t\""));
    const auto known = std::find_if(kKeywords.begin(), kKeywords.end(),
                                    [word](const auto& each) { return each.first == word; });
    if (known == kKeywords.end()) {
        const bool isPlural = word == "msgid_plural" || word.starts_with("msgstr[");
        fail(isPlural ? "a string table has no plural forms" : "this is no line of a PO file");
    }
    begin(known->second);
    line.remove_prefix(word.size());
    line = withoutBlanks(line);
    if (line.empty()) {
        fail(kNoText);
    }
    readStrings(line);
}

/// Each message is `msgctxt`, which only the header lacks, `msgid` and `msgstr`, in this order.
void POReader::begin(Part part) {
    if (part != Part::Text && m_part == Part::Text) {
        finishMessage();
    }
    const bool isInOrder = (part == Part::Context && m_part == Part::None) ||
                           (part == Part::Id && (m_part == Part::None || m_part == Part::Context)) ||
                           (part == Part::Text && m_part == Part::Id);
    if (!isInOrder) {
        fail("msgctxt, msgid and msgstr have to follow each other in this order");
    }
    if (m_part == Part::None) {
        m_message = POMessage();
        m_message.line = m_line;
        m_message.isFuzzy = std::exchange(m_isNextFuzzy, false);
        m_hasContext = part == Part::Context;
    }
    m_part = part;
}

void POReader::readStrings(std::string_view line) {
    while (!line.empty()) {
        if (line.front() != '"') {
            fail(kNoText);
        }
        line = withoutBlanks(readString(line.substr(1), current()));
    }
}

/// What follows the closing quotation mark.
std::string_view POReader::readString(std::string_view line, std::string& out) const {
    for (;;) {
        const std::string_view plain = line.substr(0, line.find_first_of("\"\\"));
        out += plain;
        line.remove_prefix(plain.size());
        if (line.empty()) {
            fail("a text does not end in its line");
        }
        const bool isEnd = line.front() == '"';
        line.remove_prefix(1);
        if (isEnd) {
            return line;
        }
        line = readEscape(line, out);
    }
}

std::string_view POReader::readEscape(std::string_view rest, std::string& out) const {
    constexpr std::string_view kLetters = "\"\\ntrabfv";
    constexpr std::string_view kMeanings = "\"\\\n\t\r\a\b\f\v";
    const char letter = rest.empty() ? '\0' : rest.front();
    const std::size_t at = letter == '\0' ? std::string_view::npos : kLetters.find(letter);
    if (at != std::string_view::npos) {
        out += kMeanings[at];
        return rest.substr(1);
    }
    if (letter != 'x' && digit(letter) > 7) {
        fail("there is no such escape");
    }
    return readNumber(rest, out);
}

/// A byte as up to three octal digits, or as `x` and two hexadecimal ones.
std::string_view POReader::readNumber(std::string_view rest, std::string& out) const {
    const bool isHexadecimal = rest.front() == 'x';
    const unsigned int base = isHexadecimal ? 16 : 8;
    const std::size_t begin = isHexadecimal ? 1 : 0;
    const std::size_t most = begin + (isHexadecimal ? 2 : 3);
    unsigned int value = 0;
    std::size_t at = begin;
    while (at < std::min(most, rest.size()) && digit(rest[at]) < base) {
        value = value * base + digit(rest[at]);
        ++at;
    }
    if (at == begin || value == 0 || value > 0xFF) {
        fail("the number of an escape is that of no character");
    }
    out += static_cast<char>(value);
    return rest.substr(at);
}

std::string& POReader::current() {
    return m_part == Part::Context ? m_message.context : m_part == Part::Id ? m_message.id : m_message.text;
}

void POReader::finishMessage() {
    if (m_part != Part::Text) {
        fail("the file ends within a message");
    }
    m_part = Part::None;
    for (const std::string* const text : {&m_message.context, &m_message.id, &m_message.text}) {
        if (!ZPKUnicode::isUTF8(*text)) {
            fail("with its escapes a text is no UTF-8", m_message.line);
        }
    }
    if (!m_hasHeader) {
        takeHeader();
    } else if (!m_hasContext) {
        fail("there is no msgctxt, which names the key", m_message.line);
    } else {
        m_file.messages.push_back(std::move(m_message));
    }
}

void POReader::takeHeader() {
    if (m_hasContext || !m_message.id.empty()) {
        fail("there is no header before it, which tells charset and language", m_message.line);
    }
    m_hasHeader = true;
    if (inCapitals(headerField("Content-Type")).find("CHARSET=UTF-8") == std::string::npos) {
        fail("the charset of the header is not UTF-8", m_message.line);
    }
    m_file.language = headerField("Language");
}

std::string POReader::headerField(const std::string& name) const {
    for (std::string_view rest = m_message.text; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        if (line.starts_with(name + ":")) {
            const std::string_view value = withoutBlanks(line.substr(name.size() + 1));
            return std::string(value.substr(0, value.find_last_not_of(kBlanks) + 1));
        }
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    return "";
}

/// At the line that is read, unless another is told.
void POReader::fail(const std::string& reason, std::size_t line) const {
    throw PackagerFailure(m_path + ":" + std::to_string(line == 0 ? m_line : line), reason);
}

}  // namespace zpk_packager
