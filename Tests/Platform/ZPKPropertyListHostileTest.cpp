// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <thread>

#include "Platform/ZPKPropertyList.h"
#include "Tests/Support/InstructionCount.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t index = 0; index < count; ++index) {
        result += text;
    }
    return result;
}

std::string nestedXml(std::size_t levels) {
    return "<plist><dict><key>k</key>" + repeated("<array>", levels) + repeated("</array>", levels) +
           "</dict></plist>";
}

void appendNumber(std::string& bytes, std::uint64_t number, int width) {
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
}

/// A binary list of the given objects, four bytes an offset and two a reference.
std::string binary(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        appendNumber(offsets, bytes.size(), 4);
        bytes += object;
    }
    const std::size_t table = bytes.size();
    bytes += offsets + std::string(6, '\0') + '\x04' + '\x02';
    appendNumber(bytes, objects.size(), 8);
    appendNumber(bytes, 0, 8);
    appendNumber(bytes, table, 8);
    return bytes;
}

std::string arrayOf(const std::vector<unsigned int>& references) {
    std::string object(1, static_cast<char>(0xA0 + references.size()));
    for (const unsigned int reference : references) {
        appendNumber(object, reference, 2);
    }
    return object;
}

/// `{ "k": object 2 }` with the objects from 2 on.
std::string binaryDictionaryOf(std::vector<std::string> objects) {
    std::string root = "\xD1";
    appendNumber(root, 1, 2);
    appendNumber(root, 2, 2);
    objects.insert(objects.begin(), {root, "\x51k"});
    return binary(objects);
}

TEST(ZPKPropertyListHostileTest, DeepXMLIsMalformed) {
    EXPECT_TRUE(ZPKPropertyList::dictionaryWithBytes(nestedXml(100)));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(nestedXml(200)));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(nestedXml(1'000'000)));
    EXPECT_FALSE(
        ZPKPropertyList::dictionaryWithBytes("<plist><dict><key>k</key>" + repeated("<array>", 1'000'000)));
}

TEST(ZPKPropertyListHostileTest, DepthCannotBeHidden) {
    const std::string hidden[] = {
        repeated("<array><!-- </array> -->", 100'000),
        repeated("<array><?x </array>?>", 100'000),
        repeated("<array><![CDATA[</array>]]>", 100'000),
        repeated("<array a=\"</array>\">", 100'000),
        repeated("<array a='/>'>", 100'000),
        repeated("<array ><dict\n><key>k</key>", 100'000),
    };
    for (const std::string& nested : hidden) {
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes("<plist><dict><key>k</key>" + nested))
            << nested.substr(0, 40);
    }
}

TEST(ZPKPropertyListHostileTest, DeepTextIsMalformed) {
    EXPECT_TRUE(ZPKPropertyList::dictionaryWithBytes("k = " + repeated("(", 100) + repeated(")", 100) + ";"));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes("k = " + repeated("(", 1'000'000)));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes("k = " + repeated("{k=", 1'000'000)));
}

TEST(ZPKPropertyListHostileTest, DeepBinaryIsMalformed) {
    for (const unsigned int levels : {100u, 60'000u}) {
        std::vector<std::string> objects;
        for (unsigned int level = 0; level < levels; ++level) {
            objects.push_back(arrayOf({level + 3}));
        }
        objects.push_back("\x51x");
        EXPECT_EQ(ZPKPropertyList::dictionaryWithBytes(binaryDictionaryOf(objects)).has_value(),
                  levels == 100u);
    }
}

TEST(ZPKPropertyListHostileTest, RepeatedReferencesDoNotMultiply) {
    std::vector<std::string> objects;
    for (unsigned int level = 0; level < 60; ++level) {
        objects.push_back(arrayOf({level + 3, level + 3, level + 3}));
    }
    objects.push_back("\x51x");
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binaryDictionaryOf(objects)));
}

TEST(ZPKPropertyListHostileTest, LongTextsDoNotMultiplyEither) {
    // Twelve megabytes of text, referred to three million times.
    std::vector<std::string> objects;
    for (unsigned int level = 0; level < 13; ++level) {
        objects.push_back(arrayOf({level + 3, level + 3, level + 3}));
    }
    std::string text = "\x5F\x12";
    appendNumber(text, 12'000'000, 4);
    objects.push_back(text + std::string(12'000'000, 'x'));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binaryDictionaryOf(objects)));
}

TEST(ZPKPropertyListHostileTest, CirclesAreMalformed) {
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binaryDictionaryOf({arrayOf({2})})));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binaryDictionaryOf({arrayOf({3}), arrayOf({0})})));
}

TEST(ZPKPropertyListHostileTest, BinaryNumbersThatDoNotFitTheFileAreMalformed) {
    const std::string good = binaryDictionaryOf({"\x51x"});
    ASSERT_TRUE(ZPKPropertyList::dictionaryWithBytes(good));
    for (std::size_t byte = good.size() - 32; byte < good.size(); ++byte) {
        for (const char value : {'\x00', '\x01', '\x7F', '\xFF'}) {
            std::string damaged = good;
            damaged[byte] = value;
            ZPKPropertyList::dictionaryWithBytes(damaged);
        }
    }
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(
        binaryDictionaryOf({"\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(
        binaryDictionaryOf({"\x5F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binaryDictionaryOf({"\xDF"})));
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binaryDictionaryOf({arrayOf({60'000})})));
}

TEST(ZPKPropertyListHostileTest, TextsWithNullCharactersAreMalformed) {
    const std::string root{'\xD1', 0, 1, 0, 2};
    const std::string keys[] = {std::string("\x53"
                                            "a\0b",
                                            4),
                                std::string("\x51\0", 2), std::string("\x62\0a\0\0", 5)};
    for (const std::string& key : keys) {
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binary({root, key, "\x51x"})));
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binary({root, "\x51k", key})));
    }
    EXPECT_TRUE(ZPKPropertyList::dictionaryWithBytes(binary({root, std::string("\x62\0a\0b", 5), "\x51x"})));
}

TEST(ZPKPropertyListHostileTest, KeysThatAreNoTextsAreSurvived) {
    const std::string root{'\xD1', 0, 1, 0, 2};
    const std::string keys[] = {std::string("\x43"
                                            "a\0b",
                                            4),
                                std::string("\x10\0", 2),
                                "\x09",
                                std::string("\xA0", 1),
                                std::string("\x80\x01", 2),
                                std::string(1, '\0'),
                                std::string("\x33", 1) + std::string(8, '\0'),
                                std::string("\xD0", 1)};
    for (const std::string& key : keys) {
        const auto list = ZPKPropertyList::dictionaryWithBytes(binary({root, key, "\x51x"}));
        EXPECT_FALSE(list && list->stringForKey("k"));
    }
    for (const char* const key :
         {"<key>a&#0;b</key>", "<key/>", "<key><key>k</key></key>", "<string>k</string>"}) {
        ZPKPropertyList::dictionaryWithBytes("<plist><dict>" + std::string(key) + "<true/></dict></plist>");
    }
}

TEST(ZPKPropertyListHostileTest, ManyEntriesAreReadInTime) {
    std::string xml =
        "<plist><dict><key>k</key><array>" + repeated("<string>signature</string>", 100'000) + "</array>";
    std::string text = "k = (";
    for (int index = 0; index < 20'000; ++index) {
        xml += "<key>key" + std::to_string(index) + "</key><string>v</string>";
    }
    text += repeated("signature, ", 100'000) + ");";
    const auto fromXML = ZPKPropertyList::dictionaryWithBytes(xml + "</dict></plist>");
    const auto fromText = ZPKPropertyList::dictionaryWithBytes(text);
    ASSERT_TRUE(fromXML && fromText);
    EXPECT_EQ(fromXML->stringArrayForKey("k")->size(), 100'000u);
    EXPECT_EQ(fromText->stringArrayForKey("k")->size(), 100'000u);
    EXPECT_EQ(fromXML->stringForKey("key19999"), "v");
}

/// A binary dictionary of so many keys "kN", all with the value "v".
std::string binaryWithKeys(unsigned int keys) {
    std::string root = "\xDF\x11";
    appendNumber(root, keys, 2);
    std::vector<std::string> objects = {"", "\x51v"};
    std::string values;
    for (unsigned int key = 0; key < keys; ++key) {
        const std::string name = "k" + std::to_string(key);
        appendNumber(root, objects.size(), 2);
        appendNumber(values, 1, 2);
        objects.push_back(static_cast<char>(0x50 + name.size()) + name);
    }
    objects.front() = root + values;
    return binary(objects);
}

std::string xmlWithKeys(unsigned int keys) {
    std::string list = "<plist><dict>";
    for (unsigned int key = 0; key < keys; ++key) {
        list += "<key>k" + std::to_string(key) + "</key><string>v</string>";
    }
    return list + "</dict></plist>";
}

TEST(ZPKPropertyListHostileTest, MoreKeysThanTheBoundAreRefused) {
    const auto atBound = ZPKPropertyList::dictionaryWithBytes(xmlWithKeys(30000));
    ASSERT_TRUE(atBound);
    EXPECT_EQ(atBound->stringForKey("k29999"), "v");
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(xmlWithKeys(30001)));
    const auto binaryAtBound = ZPKPropertyList::dictionaryWithBytes(binaryWithKeys(30000));
    ASSERT_TRUE(binaryAtBound);
    EXPECT_EQ(binaryAtBound->stringForKey("k29999"), "v");
    EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(binaryWithKeys(30001)));
}

/// So many keys, each with a value, in the old text form.
std::string textWithKeys(unsigned int keys) {
    std::string list;
    for (unsigned int key = 0; key < keys; ++key) {
        list += "key" + std::to_string(key) + " = v;\n";
    }
    return list;
}

/// The same with keys that the C++ library's hash takes for one and the same: it mixes eight bytes after
/// eight into a state, so that the second eight can undo what the first have done.
std::string textWithKeysOfOneHash(unsigned int keys) {
    constexpr std::uint64_t kFactor = 0xc6a4a7935bd1e995U;
    // The factor's inverse, modulo the word.
    std::uint64_t inverse = kFactor;
    for (int step = 0; step < 6; ++step) {
        inverse *= 2 - kFactor * inverse;
    }
    const auto mixed = [](std::uint64_t block) {
        block *= kFactor;
        return (block ^ (block >> 47)) * kFactor;
    };
    const auto unmixed = [inverse](std::uint64_t block) {
        block *= inverse;
        return (block ^ (block >> 47)) * inverse;
    };
    constexpr std::size_t kBlocks = 2;
    const std::uint64_t start = 0xc70f6907U ^ (kBlocks * 8 * kFactor);
    const auto isWritten = [](char byte) { return byte > 0 && byte != '"' && byte != '\\'; };
    std::string list;
    for (unsigned int number = 10'000'000, made = 0; made < keys; ++number) {
        std::string key = std::to_string(number);
        std::uint64_t first = 0;
        std::memcpy(&first, key.data(), sizeof(first));
        const std::uint64_t second = unmixed((start ^ mixed(first)) * kFactor);
        key.append(reinterpret_cast<const char*>(&second), sizeof(second));
        if (std::all_of(key.begin(), key.end(), isWritten)) {
            list += '"' + key + "\" = v;\n";
            ++made;
        }
    }
    return list;
}

class ZPKPropertyListGrowthTest : public ::testing::Test {
protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "valgrind runs no sanitized program";
#endif
    }
    double instructionsFor(const std::string& list, int status = 0) const {
        zpk_test::writeFile(m_folder / "list", list);
        return zpk_test::instructionsOf({ZPK_PROPERTY_LIST_TOOL, m_folder / "list"}, status);
    }

private:
    const zpk_test::TemporaryFolder m_folder;
};

TEST_F(ZPKPropertyListGrowthTest, WorkGrowsWithTheKeysAndNotWithTheirSquare) {
    EXPECT_LT(instructionsFor(textWithKeys(20000)), 12 * instructionsFor(textWithKeys(2500)));
    EXPECT_LT(instructionsFor(xmlWithKeys(20000)), 12 * instructionsFor(xmlWithKeys(2500)));
    // More than the bound are refused before anything is made of them.
    EXPECT_LT(instructionsFor(xmlWithKeys(200000), 1), 10 * instructionsFor(xmlWithKeys(20000)));
}

TEST_F(ZPKPropertyListGrowthTest, NoChoiceOfKeysMakesThemDear) {
    EXPECT_LT(instructionsFor(textWithKeysOfOneHash(8000)), 2 * instructionsFor(textWithKeys(8000)));
}

}  // namespace
