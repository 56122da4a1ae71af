// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <vector>

#include "Common/CXMLElement.h"
#include "Description/CDiscType.h"
#include "Description/CRegistryType.h"
#include "Description/CUIMLogType.h"
#include "Description/CUninstallXMLType.h"

namespace varno_zpk {

/// What allows the installation, each list in document order.
class CConditionsType {
public:
    /// Raises `CZPKError` for a null element.
    explicit CConditionsType(CXMLElement* element);
    CConditionsType(const CConditionsType&) = delete;
    CConditionsType& operator=(const CConditionsType&) = delete;
    /// Deletes the lists' entries in the order of the members, each list front to back.
    ~CConditionsType();

    std::vector<std::unique_ptr<CRegistryType>> registries;
    std::vector<std::unique_ptr<CUIMLogType>> uimLogs;
    std::vector<std::unique_ptr<CUninstallXMLType>> uninstallXmls;
    std::vector<std::unique_ptr<CDiscType>> discs;

private:
    void CreateChildren(CXMLElement* element);
    void CreateChild(CXMLElement* child);
};

}  // namespace varno_zpk
