// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// A file that identifies the installation disc: a relative path, or a pattern with "*" and "?".
class CDiscType {
public:
    /// Raises `CZPKError` for a null element. A missing attribute leaves an empty text.
    explicit CDiscType(CXMLElement* element);

    std::string filePath;

private:
    void CreateAttribute(CXMLElement* element);
};

}  // namespace varno_zpk
