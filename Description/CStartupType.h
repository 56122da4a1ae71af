// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// "Info/Startup.xml": the program to run once the payload is unpacked.
class CStartupType {
public:
    /// Raises `CZPKError` for a null element. A missing attribute leaves an empty text.
    explicit CStartupType(CXMLElement* element);

    /// May contain the variable "$Data$".
    std::string exec;
    /// The program's one argument.
    std::string param;

private:
    void CreateAttribute(CXMLElement* element);
};

}  // namespace varno_zpk
