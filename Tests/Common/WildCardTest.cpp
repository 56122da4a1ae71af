// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/WildCard.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

using varno_zpk::WildCard;

namespace {

/// The rules of matching one by one, every star tried with every length: slow and plainly right.
bool matchesByTheRules(const char* pattern, const char* text) {
    switch (*pattern) {
        case '\0':
            return *text == '\0';
        case '?':
            return *text != '\0' && matchesByTheRules(pattern + 1, text + 1);
        case '*':
            return matchesByTheRules(pattern + 1, text) ||
                   (*text != '\0' && matchesByTheRules(pattern, text + 1));
        default:
            return *pattern == *text && matchesByTheRules(pattern + 1, text + 1);
    }
}

/// All texts of up to `length` of the given letters, the empty one first.
std::vector<std::string> allTexts(const std::string& letters, std::size_t length) {
    std::vector<std::string> texts{""};
    std::size_t first = 0;
    for (std::size_t size = 1; size <= length; ++size) {
        const std::size_t end = texts.size();
        for (; first < end; ++first) {
            for (const char letter : letters) {
                texts.push_back(texts[first] + letter);
            }
        }
    }
    return texts;
}

void expectTheRulesFor(const std::vector<std::string>& patterns, const std::vector<std::string>& texts) {
    for (const std::string& pattern : patterns) {
        for (const std::string& text : texts) {
            ASSERT_EQ(WildCard::Match(pattern, text), matchesByTheRules(pattern.c_str(), text.c_str()))
                << "pattern '" << pattern << "' text '" << text << "'";
        }
    }
}

std::string repeated(const std::string& part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

}  // namespace

TEST(WildCardTest, MatchesByTheTable) {
    const struct {
        const char* pattern;
        const char* text;
        bool matches;
    } rows[] = {
        {"", "", true},
        {"", "a", false},
        {"*", "", true},
        {"?", "", false},
        {"a", "", false},
        {"a*c", "abbbc", true},
        {"a*c", "abcd", false},
        {"a*c", "ac", true},
        {"A*", "abc", false},
        {"**", "x", true},
        {"**", "", true},
        {"*?", "", false},
        {"?*", "x", true},
        {"*?*", "x", true},
        {"??", "x", false},
        {"??", "xyz", false},
        {"abc", "abc", true},
        {"abc", "abcd", false},
        {"abcd", "abc", false},
        {"*abab", "abaabab", true},
        {"*a*b", "xaxbxb", true},
        {"a*b*c", "a-b-b-c-c", true},
        {"a*b*c", "a-b-c-b", false},
        // No classes, no escape, no other special byte.
        {"[a]", "a", false},
        {"[a]", "[a]", true},
        {"\\*", "*", false},
        {"\\*", "\\abc", true},
        {".", "x", false},
        {"*", "*", true},
        {"?", "?", true},
        {"a", "*", false},
        // Neither a separator nor a leading dot is special.
        {"/Volumes/X*/Setup.app", "/Volumes/X/Setup.app", true},
        {"/Volumes/X*/Setup.app", "/Volumes/X/Deep/Down/Setup.app", true},
        {"/Volumes/X*/Setup.app", "/Volumes/X/Setup.app/Contents", false},
        {"*", ".hidden", true},
        // Bytes, not characters.
        {"?", "\xC3\xA9", false},
        {"??", "\xC3\xA9", true},
        {"\xFF*\x80", "\xFF\xFE\x80", true},
        {"\xC3\xA9", "e", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(WildCard::AMatch(row.pattern, row.text), row.matches) << row.pattern << " on " << row.text;
        EXPECT_EQ(WildCard::Match(row.pattern, row.text), row.matches) << row.pattern << " on " << row.text;
    }
}

TEST(WildCardTest, MatchReadsEachTextUpToItsFirstZeroByte) {
    EXPECT_TRUE(WildCard::Match(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(WildCardTest, FollowsTheRulesOnAllSmallInputs) {
    expectTheRulesFor(allTexts("ab*?", 5), allTexts("ab", 6));
}

TEST(WildCardTest, FollowsTheRulesOnTextsThatHoldPatternCharacters) {
    expectTheRulesFor(allTexts("a*?", 5), allTexts("a*?", 4));
}

TEST(WildCardTest, FollowsTheRulesOnRandomInputs) {
    std::mt19937 random(20240517);
    const auto randomText = [&random](const std::string& letters, unsigned int longest) {
        std::string text;
        for (auto length = random() % (longest + 1); length > 0; --length) {
            text += letters[random() % letters.size()];
        }
        return text;
    };
    int matches = 0;
    for (int i = 0; i < 100000; ++i) {
        const std::string pattern = randomText("aab?**", 9);
        const std::string text = randomText("aab", 14);
        const bool expected = matchesByTheRules(pattern.c_str(), text.c_str());
        ASSERT_EQ(WildCard::Match(pattern, text), expected)
            << "pattern '" << pattern << "' text '" << text << "'";
        matches += expected ? 1 : 0;
    }
    EXPECT_GT(matches, 10000) << "too few of the random patterns match for the comparison to say much";
}

// Retrying every star would take longer than the age of the universe here.
TEST(WildCardTest, ManyStarsOnALongTextComeToAnEnd) {
    const std::string text(100000, 'a');
    EXPECT_FALSE(WildCard::Match(repeated("*a", 1000) + "*b", text));
    EXPECT_TRUE(WildCard::Match(repeated("*a", 1000) + "*", text));
    EXPECT_FALSE(WildCard::Match("b" + repeated("*", 100000), text));
    EXPECT_TRUE(WildCard::Match(repeated("*", 100000), text));
    EXPECT_FALSE(WildCard::Match("*" + std::string(1000, 'a') + "b", text));
    EXPECT_FALSE(WildCard::Match(repeated("*?a", 1000) + "b*", text));
}
