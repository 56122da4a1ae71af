// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// A product that the package applies to, under the name that the user knows.
class CItemInfoType {
public:
    /// Raises `CZPKError` for a null element. A missing attribute leaves an empty text.
    explicit CItemInfoType(CXMLElement* element);

    std::string displayName;

private:
    void CreateAttribute(CXMLElement* element);
};

}  // namespace varno_zpk
