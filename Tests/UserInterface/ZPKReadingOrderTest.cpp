// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKReadingOrder.h"

#include <gtest/gtest.h>

#include "UserInterface/Terminal/ZPKTextColumns.h"

namespace {

TEST(ZPKReadingOrder, SignsOfRightToLeftLinesAreMarked) {
    const struct {
        const char* text;
        const char* marked;
    } rows[] = {
        {"שלום.", "שלום.\u200F"},
        {"שלום", "שלום"},
        {"مرحبا…\nمرحبا،\nمرحبا", "مرحبا…\u200F\nمرحبا،\u200F\nمرحبا"},
        {"اختر «بحث».", "اختر «بحث».\u200F"},
        {"אֱ.", "אֱ.\u200F"},
        // What belongs to the letters before it is turned around with them.
        {"מוצר 5", "מוצר 5"},
        {"מוצר 5.", "מוצר 5.\u200F"},
        {"حزمة ٥!", "حزمة ٥!\u200F"},
        {"[##..]  ٤٠٪  ٠:٠٣  جارٍ…", "[##..]  ٤٠٪  ٠:٠٣  جارٍ…\u200F"},
        {"שלום. ", "שלום. \u200F"},
        {"«بحث» هنا", "\u200F«بحث» هنا"},
        {"  (שלום)", "  \u200F(שלום)\u200F"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ZPKReadingOrder::marked(row.text), row.marked);
    }
}

TEST(ZPKReadingOrder, OthersStayAsTheyAre) {
    for (const char* text : {"", "\n\n", "Stop.", "> [1] חיפוש", "  [2] ביטול\n[1]: ", "שלום Suite.",
                             "\"3\" ? [1] [2]", "検索。", "“Search”.", "  حزمة", "100%", "Поиск…", "\xff."}) {
        EXPECT_EQ(ZPKReadingOrder::marked(text), text);
    }
}

TEST(ZPKReadingOrder, MarksTakeNoRoom) {
    EXPECT_EQ(ZPKTextColumns::of("\u200F"), 0U);
}

}  // namespace
