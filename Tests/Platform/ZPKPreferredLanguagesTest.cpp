// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPreferredLanguages.h"

#include <gtest/gtest.h>

#include <optional>

#include "Tests/Platform/ScopedEnvironment.h"

namespace {

using zpk_test::ScopedEnvironment;

TEST(ZPKPreferredLanguagesTest, FollowTheEnvironment) {
    using Value = std::optional<std::string>;
    const Value unset;
    struct Row {
        Value language, all, messages, lang;
        std::vector<std::string> preferred;
    };
    const Row rows[] = {
        {unset, unset, unset, unset, {}},
        {unset, unset, unset, "de_DE.UTF-8", {"de_DE", "de"}},
        {unset, unset, "fr_FR.UTF-8", "de_DE.UTF-8", {"fr_FR", "fr"}},
        {unset, "ja_JP.UTF-8", "fr_FR.UTF-8", "de_DE.UTF-8", {"ja_JP", "ja"}},
        {unset, "", "", "de_DE.UTF-8", {"de_DE", "de"}},
        {"ko:pt_BR", unset, unset, "de_DE.UTF-8", {"ko", "pt_BR", "pt"}},
        {"ko", "ja_JP.UTF-8", unset, unset, {"ko"}},
        {"", unset, unset, "de_DE.UTF-8", {"de_DE", "de"}},
        {"ko", unset, unset, unset, {}},
        {"ko", unset, unset, "C", {}},
        {"ko", unset, unset, "POSIX", {}},
        {"ko", "C", unset, "de_DE.UTF-8", {}},
        {"ko", "C.UTF-8", unset, unset, {"ko"}},
        {unset, "C.UTF-8", unset, "de_DE.UTF-8", {}},
        {"en_US.UTF-8:en:de@euro", unset, unset, "en_US.UTF-8", {"en_US", "en", "de"}},
        {"::de::", unset, unset, "en_US.UTF-8", {"de"}},
        {":", unset, unset, "en_US.UTF-8", {}},
        {"fr:C:de", unset, unset, "en_US.UTF-8", {"fr"}},
        {unset, unset, unset, "sr_RS.UTF-8@latin", {"sr_RS", "sr"}},
        {unset, unset, unset, "zh_CN.GB18030", {"zh_CN", "zh", "zh-Hans"}},
        {unset, unset, unset, "zh_SG", {"zh_SG", "zh", "zh-Hans"}},
        {unset, unset, unset, "zh_TW.UTF-8", {"zh_TW", "zh"}},
        {"zh:en", unset, unset, "en_US.UTF-8", {"zh", "zh-Hans", "en"}},
        {"zh_TW:zh_CN", unset, unset, "en_US.UTF-8", {"zh_TW", "zh", "zh_CN", "zh-Hans"}},
        {unset, unset, unset, ".UTF-8", {}},
        {unset, unset, unset, "_", {"_"}},
    };
    for (const Row& row : rows) {
        const ScopedEnvironment language("LANGUAGE", row.language);
        const ScopedEnvironment all("LC_ALL", row.all);
        const ScopedEnvironment messages("LC_MESSAGES", row.messages);
        const ScopedEnvironment lang("LANG", row.lang);
        EXPECT_EQ(ZPKPreferredLanguages::current(), row.preferred)
            << "LANGUAGE=" << row.language.value_or("-") << " LC_ALL=" << row.all.value_or("-")
            << " LC_MESSAGES=" << row.messages.value_or("-") << " LANG=" << row.lang.value_or("-");
    }
}

}  // namespace
