// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>

#include "Common/CXMLElement.h"
#include "Description/CConditionsType.h"
#include "Description/CTargetItemsType.h"

namespace varno_zpk {

/// "Info/Condition.xml": the conditions of the installation and the products to name when they are
/// not met.
class CUpdateInfoType {
public:
    /// Raises `CZPKError` for a null element.
    explicit CUpdateInfoType(CXMLElement* element);
    CUpdateInfoType(const CUpdateInfoType&) = delete;
    CUpdateInfoType& operator=(const CUpdateInfoType&) = delete;
    /// Deletes the target items, then the conditions.
    ~CUpdateInfoType();

    /// Stored, never interpreted.
    std::string xmlVersion;
    /// Null when the file names no conditions. Of several, the last.
    std::unique_ptr<CConditionsType> conditions;
    /// Null when the file names no target items. Of several, the last.
    std::unique_ptr<CTargetItemsType> targetItems;

private:
    void CreateAttribute(CXMLElement* element);
    void CreateChildren(CXMLElement* element);
};

}  // namespace varno_zpk
