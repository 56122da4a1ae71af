// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Common/CXMLElement.h"
#include "Description/CItemInfoType.h"

namespace varno_zpk {

/// The products that the package applies to, in document order.
class CTargetItemsType {
public:
    /// Raises `CZPKError` for a null element.
    explicit CTargetItemsType(CXMLElement* element);
    CTargetItemsType(const CTargetItemsType&) = delete;
    CTargetItemsType& operator=(const CTargetItemsType&) = delete;
    /// Leaves the items allocated: they live until the process ends.
    ~CTargetItemsType() = default;

    /// The name of every item, empty ones included.
    std::vector<std::string> GetDisplayNameList() const;

    std::vector<CItemInfoType*> items;

private:
    void CreateChildren(CXMLElement* element);
};

}  // namespace varno_zpk
