// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Reads the string table that it is given, and says by its exit status whether it is without a fault.

#include <vector>

#include "Common/CBaseObjectUtil.h"
#include "Common/CResourceBundleStringTableParser.h"

int main(int count, char** arguments) {
    if (count != 2) {
        return 64;
    }
    std::vector<varno_zpk::CBaseObject*> elements;
    varno_zpk::CResourceBundleStringTableParser parser;
    const int result = parser.Parse(arguments[1], elements);
    varno_zpk::CBaseObjectUtil::Destroy(elements);
    return result == 0 ? 0 : 1;
}
