// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// A condition: an uninstall description of this file name is in the uninstall folder.
class CUninstallXMLType {
public:
    /// Raises `CZPKError` for a null element. A missing attribute leaves an empty text.
    explicit CUninstallXMLType(CXMLElement* element);

    std::string appName;

private:
    void CreateAttribute(CXMLElement* element);
};

}  // namespace varno_zpk
