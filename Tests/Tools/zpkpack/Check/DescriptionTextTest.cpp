// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/DescriptionText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "Description/CUpdateInfoType.h"
#include "Description/CZPKXMLLoader.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tools/zpkpack/Check/CheckRules.h"
#include "Tools/zpkpack/Check/ConditionCheck.h"
#include "Tools/zpkpack/Check/LanguagesCheck.h"

using varno_zpk::CUpdateInfoType;
using varno_zpk::CZPKXMLLoader;

namespace zpk_packager {

namespace {

constexpr int kMutations = 800;

const std::string kCondition =
    "<?xml version='1.0' encoding='UTF-8'?><!DOCTYPE u [<!ENTITY e 'x'>]>\n"
    "<UpdateInfo XmlVersion='1.0'><Conditions><UIMLog Signature='&e;'/>\n"
    "<Disc FilePath='\xC3\xA9*'/></Conditions><TargetItems><ItemInfo "
    "DisplayName='n'/></TargetItems></UpdateInfo>";

const std::string kLanguages =
    "<Languages FallBackCode='en'><Language Code='en'/><!-- c --><Language Code='ja'/></Languages>";

/// The same at each run.
class Mutator {
public:
    std::string mutated(std::string text) {
        for (std::uint32_t count = 1 + next() % 2; count > 0; --count) {
            const std::size_t at = next() % text.size();
            constexpr const char kBytes[] = "<>&'\"/= aC\xC3\xFF\x01";
            const char byte = kBytes[next() % (sizeof kBytes - 1)];
            switch (next() % 3) {
                case 0:
                    text.erase(at, 1 + next() % 4);
                    break;
                case 1:
                    text.insert(at, 1, byte);
                    break;
                default:
                    text[at] = byte;
                    break;
            }
        }
        return text;
    }

private:
    std::uint32_t next() {
        m_state = m_state * 1103515245U + 12345U;
        return m_state >> 16;
    }

    std::uint32_t m_state = 1;
};

bool has(const FindingList& findings, const std::string& prefix) {
    for (const Finding& finding : findings.findings()) {
        if (std::string(finding.rule->name).starts_with(prefix)) {
            return true;
        }
    }
    return false;
}

// The check and the launcher must not differ in what they take.
TEST(DescriptionTextTest, ConditionsAreRefusedWhereTheLauncherRefusesThem) {
    const zpk_test::TemporaryFolder folder;
    Mutator mutator;
    int refused = 0;
    for (int round = 0; round < kMutations; ++round) {
        const std::string text = mutator.mutated(kCondition);
        zpk_test::writeFile(folder / "Info/Condition.xml", text);
        FindingList findings;
        ConditionCheck(findings).run(folder.path());
        const std::unique_ptr<CUpdateInfoType> loaded(
            CZPKXMLLoader::LoadConditionXML(folder / "Info/Condition.xml"));
        ASSERT_EQ(has(findings, "xml-"), loaded == nullptr) << text;
        refused += loaded == nullptr ? 1 : 0;
    }
    EXPECT_GT(refused, kMutations / 10);
    EXPECT_LT(refused, kMutations * 19 / 20);
}

TEST(DescriptionTextTest, LanguageListsAreRefusedWhereTheLauncherRefusesThem) {
    const zpk_test::TemporaryFolder folder;
    Mutator mutator;
    int refused = 0;
    for (int round = 0; round < kMutations; ++round) {
        const std::string text = mutator.mutated(kLanguages);
        zpk_test::writeFile(folder / "Languages.xml", text);
        FindingList findings;
        LanguagesCheck(folder.path(), findings).run();
        const auto loaded = CZPKXMLLoader::LoadLanguagesXML(folder / "Languages.xml");
        const bool isOffering = loaded != nullptr && !loaded->languages.empty();
        ASSERT_EQ(findings.errors() > 0, !isOffering) << text;
        refused += isOffering ? 0 : 1;
    }
    EXPECT_GT(refused, kMutations / 10);
    EXPECT_LT(refused, kMutations * 19 / 20);
}

}  // namespace

}  // namespace zpk_packager
