// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKFoldedText.h"

#include <algorithm>

#include "Base/ZPKUnicode.h"
#include "UserInterface/Terminal/ZPKTextColumns.h"

namespace {

constexpr std::size_t kMoreIndent = 2;

/// What may not begin a line, and what may not end one, where there are no blanks.
constexpr std::u32string_view kClosing =
    U")]}.,:;!?%»”’…、。，．！？：；）］｝」』】》〉〕〟・ーぁぃぅぇぉっゃゅょァィゥェォッャュョ";
constexpr std::u32string_view kOpening = U"([{«“‘（［｛「『【《〈〔〝";

bool isIn(std::u32string_view characters, char32_t character) {
    return characters.find(character) != std::u32string_view::npos;
}

/// Wide characters that make words without blanks. Hangul has blanks.
bool isIdeograph(char32_t character) {
    const bool isHangul =
        (character >= 0x1100 && character < 0x1200) || (character >= 0xAC00 && character < 0xD7B0);
    return !isHangul && ZPKTextColumns::ofCharacter(character) == 2;
}

bool mayPart(char32_t before, char32_t after) {
    return (isIdeograph(before) || isIdeograph(after)) && !isIn(kClosing, after) && !isIn(kOpening, before) &&
           ZPKTextColumns::ofCharacter(after) > 0;
}

/// Takes the character at the start of `text` away, and gives its bytes; those that are no UTF-8 alone.
std::string_view takeCharacter(std::string_view& text, char32_t& outCharacter) {
    outCharacter = 0;
    const std::size_t length = std::max<std::size_t>(ZPKUnicode::decode(text, outCharacter), 1);
    const std::string_view bytes = text.substr(0, length);
    text.remove_prefix(length);
    return bytes;
}

/// Takes from the start of `text` what no line may part.
std::string_view takeWord(std::string_view& text) {
    std::string_view rest = text;
    char32_t before = 0;
    takeCharacter(rest, before);
    while (!rest.empty() && rest.front() != ' ') {
        std::string_view next = rest;
        char32_t character = 0;
        takeCharacter(next, character);
        if (mayPart(before, character)) {
            break;
        }
        // A mark belongs to the letter that it stands on.
        before = ZPKTextColumns::ofCharacter(character) > 0 ? character : before;
        rest = next;
    }
    const std::string_view word = text.substr(0, text.size() - rest.size());
    text = rest;
    return word;
}

std::size_t takeBlanks(std::string_view& text) {
    const std::size_t count = std::min(text.find_first_not_of(' '), text.size());
    text.remove_prefix(count);
    return count;
}

/// One line of the text, as the lines that it becomes.
class Folding {
public:
    Folding(std::string& folded, std::size_t columns) : m_folded(folded), m_columns(columns) {}

    void add(std::string_view line) {
        const std::size_t blanks = takeBlanks(line);
        // Half of a narrow terminal is for the text, and room for a wide character.
        const std::size_t most = std::min(m_columns / 2, m_columns - std::min<std::size_t>(m_columns, 2));
        m_indent = blanks > 0 ? std::min(blanks + kMoreIndent, most) : 0;
        begin(std::min(blanks, most));
        std::size_t gap = 0;
        for (; !line.empty(); gap = takeBlanks(line)) {
            addWord(takeWord(line), gap);
        }
        // Whoever is asked types behind the last one.
        m_folded.append(m_column + gap <= m_columns ? gap : 0, ' ');
    }

private:
    void begin(std::size_t indent) {
        m_folded.append(indent, ' ');
        m_column = indent;
        m_isEmpty = true;
    }

    void addWord(std::string_view word, std::size_t gap) {
        const std::size_t width = ZPKTextColumns::of(word);
        if (m_column + gap + width <= m_columns) {
            m_folded.append(gap, ' ');
            m_folded.append(word);
            m_column += gap + width;
            m_isEmpty = false;
            return;
        }
        if (!m_isEmpty) {
            m_folded += '\n';
            begin(m_indent);
        }
        addCut(word);
    }

    void addCut(std::string_view word) {
        while (!word.empty()) {
            char32_t character = 0;
            const std::string_view bytes = takeCharacter(word, character);
            const std::size_t width = ZPKTextColumns::ofCharacter(character);
            if (!m_isEmpty && m_column + width > m_columns) {
                m_folded += '\n';
                begin(m_indent);
            }
            m_folded.append(bytes);
            m_column += width;
            m_isEmpty = false;
        }
    }

    std::string& m_folded;
    const std::size_t m_columns;
    std::size_t m_indent = 0;
    std::size_t m_column = 0;
    bool m_isEmpty = true;
};

}  // namespace

std::string ZPKFoldedText::of(std::string_view text, std::size_t columns) {
    std::string folded;
    Folding folding(folded, std::max<std::size_t>(columns, 1));
    for (;;) {
        const std::size_t end = text.find('\n');
        folding.add(text.substr(0, end));
        if (end == std::string_view::npos) {
            return folded;
        }
        folded += '\n';
        text.remove_prefix(end + 1);
    }
}
