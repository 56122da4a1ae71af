// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Every allocation of the localization fails in turn, until all of them have.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundle.h"
#include "Common/CResourceBundlePrivateManager.h"
#include "Common/CResourceBundleStringElement.h"
#include "Common/CResourceBundleStringTable.h"
#include "Common/CResourceBundleStringTableParser.h"
#include "Tests/Support/FailingAllocation.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CBaseObject;
using varno_zpk::CBaseObjectUtil;
using varno_zpk::CResourceBundle;
using varno_zpk::CResourceBundlePrivateManager;
using varno_zpk::CResourceBundleStringElement;
using varno_zpk::CResourceBundleStringTable;
using varno_zpk::CResourceBundleStringTableParser;
using zpk_test::FailingAllocation;
using zpk_test::liveAllocations;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

constexpr int kEntryCount = 6;

/// Texts too long to be stored without an allocation; "0", "1", ... in their first byte.
std::string tableContents() {
    std::string contents;
    for (int index = 0; index < kEntryCount; ++index) {
        const std::string number = std::to_string(index);
        contents += number + std::string(40, 'k') + "=\"" + number + std::string(100, 'v') + "\";\n";
    }
    return contents;
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

int parseWithFailure(const std::string& path, std::size_t number, std::vector<CBaseObject*>& elements) {
    const FailingAllocation failing(number);
    return CResourceBundleStringTableParser().Parse(path.c_str(), elements);
}

TEST(LocalizationAllocationTest, ParseGivesMinusOneAndKeepsTheEntriesBefore) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    writeFile(path, tableContents());

    std::size_t mostEntriesBeforeFailure = 0;
    for (std::size_t number = 1;; ++number) {
        ASSERT_LT(number, 1000u) << "the parse never succeeds";
        const std::ptrdiff_t descriptors = openDescriptors();
        const std::size_t live = liveAllocations();
        {
            std::vector<CBaseObject*> elements;
            const int result = parseWithFailure(path, number, elements);
            for (std::size_t index = 0; index < elements.size(); ++index) {
                const auto* element = DOWN_CAST(CResourceBundleStringElement*, elements[index]);
                EXPECT_EQ(element->GetValue(), std::to_string(index) + std::string(100, 'v'));
            }
            const std::size_t count = elements.size();
            CBaseObjectUtil::Destroy(elements);
            if (result == 0) {
                EXPECT_EQ(count, static_cast<std::size_t>(kEntryCount));
                break;
            }
            ASSERT_EQ(result, -1) << "allocation " << number;
            mostEntriesBeforeFailure = std::max(mostEntriesBeforeFailure, count);
        }
        EXPECT_EQ(liveAllocations(), live) << "allocation " << number;
        EXPECT_EQ(openDescriptors(), descriptors) << "allocation " << number;
    }
    EXPECT_EQ(mostEntriesBeforeFailure, static_cast<std::size_t>(kEntryCount - 1));
}

/// Whether the table could be made; leaks count as failures either way.
bool makeTableWithFailure(const std::string& path, std::size_t number) {
    const std::size_t live = liveAllocations();
    bool made = false;
    try {
        const FailingAllocation failing(number);
        const CResourceBundleStringTable table(path, "a table with a long name");
        made = true;
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(liveAllocations(), live) << "allocation " << number;
    return made;
}

TEST(LocalizationAllocationTest, TableThatCannotBeMadeLeaksNothing) {
    const TemporaryFolder folder;
    writeFile(folder / "table", tableContents());
    EXPECT_FALSE(makeTableWithFailure(folder / "table", 1));
    for (std::size_t number = 2; number < 200; ++number) {
        makeTableWithFailure(folder / "table", number);
    }
    EXPECT_TRUE(makeTableWithFailure(folder / "table", 100000));
}

/// Looks a key up in fresh bundles. Gives the text, or nothing when an exception came out.
std::string lookUpWithFailure(const std::string& bundlePath, const std::string& key, std::size_t number) {
    std::string text;
    const std::unique_ptr<CResourceBundlePrivateManager> manager(CResourceBundlePrivateManager::GetManager());
    try {
        const FailingAllocation failing(number);
        CResourceBundle::AddDefaultBundlePath(bundlePath.c_str());
        CResourceBundle::GetDefaultBundleAt(0)->GetLanguageCount();
        text = CResourceBundle::GetLocalizedString(key.c_str());
    } catch (const std::bad_alloc&) {
    }
    return text;
}

TEST(LocalizationAllocationTest, LookupEitherThrowsOrGivesATextAndLeaksNothing) {
    const TemporaryFolder folder;
    writeFile(folder / "UILang/en/ZPKStringTable.def", tableContents());
    const std::string key = "5" + std::string(40, 'k');
    const std::string value = "5" + std::string(100, 'v');
    // The other singletons are made first, so that they do not count as leaks.
    ASSERT_EQ(lookUpWithFailure(folder / "UILang", key, 100000), value);

    const std::size_t live = liveAllocations();
    bool thrown = false;
    for (std::size_t number = 1; number < 200; ++number) {
        const std::string text = lookUpWithFailure(folder / "UILang", key, number);
        thrown = thrown || text.empty();
        EXPECT_TRUE(text.empty() || text == key || text == value) << text;
    }
    EXPECT_TRUE(thrown);
    EXPECT_EQ(liveAllocations(), live);
}

}  // namespace
