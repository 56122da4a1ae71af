// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CZPKStatus.h"

#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <type_traits>

using varno_zpk::CZPKStatus;

namespace {

struct Row {
    const CZPKStatus* status;
    const char* message;
};

const Row kCatalogue[] = {
    {&CZPKStatus::ERROR_UNDEFINED_BEHAVIOR_HAPPEND, "Undefined Error occurs."},
    {&CZPKStatus::ERROR_RUNTIME_ERROR, "RunTime Error oocer."},
    {&CZPKStatus::ERROR_FAILED_MAKEDIRECTORY, "Faild make directory"},
    {&CZPKStatus::ERROR_FAILED_MAKE_INFOCAB, "Failed make infocab"},
    {&CZPKStatus::ERROR_FAILED_MAKE_DATACAB, "Failed make datacab"},
    {&CZPKStatus::ERROR_FAILED_MAKE_ARCHIVE, "Failed make archive"},
    {&CZPKStatus::ERROR_FAILED_EXTRACT, "Failed extract archive"},
    {&CZPKStatus::ERROR_FAILED_ENCODE, "Failed encode"},
    {&CZPKStatus::ERROR_FAILED_DECODE, "Failed decode"},
    {&CZPKStatus::ERROR_FAILED_BIND, "Failed bind"},
    {&CZPKStatus::ERROR_FAILED_UNBIND, "Failed unbind"},
    {&CZPKStatus::ERROR_FAILED_ENCODED_INFOX, "Failed encoded infox"},
    {&CZPKStatus::ERROR_FAILED_ENCODED_DATAX, "Failed encoded datax"},
    {&CZPKStatus::ERROR_FAILED_DECODED_INFOX, "Failed decoded infox"},
    {&CZPKStatus::ERROR_FAILED_DECODED_DATAX, "Failed decoded datax"},
    {&CZPKStatus::ERROR_FAILED_BIND_INFOX, "Failed bind infox"},
    {&CZPKStatus::ERROR_FAILED_BIND_DATAX, "Failed bind datax"},
    {&CZPKStatus::ERROR_FAILED_UNBIND_INFOX, "Failed unbind infox"},
    {&CZPKStatus::ERROR_FAILED_UNBIND_DATAX, "Failed unbind datax"},
    {&CZPKStatus::ERROR_FAILED_LOAD_CONDITION, "Failed load Condition.xml"},
    {&CZPKStatus::ERROR_FAILED_LOAD_STARTUP, "Failed load Startup.xml"},
    {&CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES, "Failed load Languages.xml"},
    {&CZPKStatus::ERROR_LANGUAGESXML_MUSTBEEXIST, "Languages.xml not found"},
    {&CZPKStatus::ERROR_FALLBACKCODE_MUSTBEEXIST, "FallBackCode not found"},
    {&CZPKStatus::ERROR_ZPKSTRINGTABLE_MUSTBEEXIST, "ZPKStringTable not found"},
};

template <typename Type>
concept Comparable = requires(const Type& left, const Type& right) {
    left == right;
};

}  // namespace

TEST(ZPKStatusTest, CatalogueHasItsTextsToTheByte) {
    EXPECT_EQ(std::size(kCatalogue), 25u);
    std::set<const CZPKStatus*> constants;
    for (const Row& row : kCatalogue) {
        EXPECT_EQ(row.status->GetStatus(), row.message);
        constants.insert(row.status);
    }
    EXPECT_EQ(constants.size(), 25u);
}

TEST(ZPKStatusTest, IsAMessageBehindAVirtualDestructor) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CZPKStatus>);
    EXPECT_EQ(sizeof(CZPKStatus), sizeof(void*) + sizeof(std::string));
    EXPECT_FALSE(std::is_default_constructible_v<CZPKStatus>);
    EXPECT_FALSE(Comparable<CZPKStatus>);
}

TEST(ZPKStatusTest, CopiesTheText) {
    std::string message("one\0two", 7);
    const CZPKStatus status(message);
    message = "other";
    EXPECT_EQ(status.GetStatus(), std::string("one\0two", 7));
}

TEST(ZPKStatusTest, GivesTheTextByValue) {
    EXPECT_TRUE((std::is_same_v<decltype(&CZPKStatus::GetStatus), std::string (CZPKStatus::*)() const>));
}
