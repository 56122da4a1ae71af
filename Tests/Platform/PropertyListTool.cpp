// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Reads the property list that it is given, and says by its exit status whether it is one.

#include "Platform/ZPKPropertyList.h"

int main(int count, char** arguments) {
    if (count != 2) {
        return 64;
    }
    return ZPKPropertyList::dictionaryWithContentsOfFile(arguments[1]) ? 0 : 1;
}
