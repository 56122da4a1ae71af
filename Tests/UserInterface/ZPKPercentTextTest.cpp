// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKPercentText.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "Base/ZPKTerminalText.h"

namespace {

const std::map<std::string, std::string> kForty = {
    {"ar", "\u0664\u0660\u066A"},
    {"de", "40\u00A0%"},
    {"en", "40%"},
    {"es", "40\u00A0%"},
    {"fr", "40\u00A0%"},
    {"he", "40%"},
    {"it", "40%"},
    {"ja", "40%"},
    {"ko", "40%"},
    {"nl", "40%"},
    {"pl", "40%"},
    {"pt_BR", "40%"},
    {"ru", "40\u00A0%"},
    {"tr", "%40"},
    {"zh_CN", "40%"},
    {"zh_TW", "40%"},
};

TEST(ZPKPercentText, EveryLanguageHasItsOwnWay) {
    for (const auto& [language, text] : kForty) {
        EXPECT_EQ(ZPKPercentText::of(40, language), text) << language;
        EXPECT_EQ(ZPKTerminalText::harmless(text), text) << language;
    }
}

TEST(ZPKPercentText, EveryLanguageThatIsDeliveredIsKnownHere) {
    std::set<std::string> delivered;
    for (const auto& entry : std::filesystem::directory_iterator(ZPK_TEST_LANGUAGES)) {
        if (entry.is_directory()) {
            delivered.insert(entry.path().filename());
        }
    }
    std::set<std::string> known;
    for (const auto& [language, text] : kForty) {
        known.insert(language);
    }
    EXPECT_EQ(known, delivered);
}

TEST(ZPKPercentText, WholeRange) {
    EXPECT_EQ(ZPKPercentText::of(0, "en"), "0%");
    EXPECT_EQ(ZPKPercentText::of(100, "tr"), "%100");
    EXPECT_EQ(ZPKPercentText::of(100, "ar"), "\u0661\u0660\u0660\u066A");
    EXPECT_EQ(ZPKPercentText::of(7, "ar"), "\u0667\u066A");
}

TEST(ZPKPercentText, RegionsFollowTheirLanguageAndUnknownOnesTheUsualWay) {
    EXPECT_EQ(ZPKPercentText::of(40, "fr_CA"), "40\u00A0%");
    EXPECT_EQ(ZPKPercentText::of(40, "tr-TR"), "%40");
    for (const char* language : {"", "xx", "trx", "_", "nonsense"}) {
        EXPECT_EQ(ZPKPercentText::of(40, language), "40%") << language;
    }
}

}  // namespace
