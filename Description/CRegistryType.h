// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// A condition of the "Registry" kind; the condition check never looks at it.
class CRegistryType {
public:
    /// Raises `CZPKError` for a null element. A missing attribute leaves an empty text.
    explicit CRegistryType(CXMLElement* element);

    std::string keyName;

private:
    void CreateAttribute(CXMLElement* element);
};

}  // namespace varno_zpk
