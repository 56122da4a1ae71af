// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// A condition: software with this signature is in the installed-software list.
class CUIMLogType {
public:
    /// Raises `CZPKError` for a null element. A missing attribute leaves an empty text.
    explicit CUIMLogType(CXMLElement* element);

    std::string signature;

private:
    void CreateAttribute(CXMLElement* element);
};

}  // namespace varno_zpk
