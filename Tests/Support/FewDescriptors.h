// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/resource.h>

#include <cstddef>
#include <vector>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_test {

/// Leaves the process that many descriptors to open, as long as it is there.
class FewDescriptors {
public:
    explicit FewDescriptors(std::size_t free);
    ~FewDescriptors();
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit m_before{};
    std::vector<ZPKFileDescriptor> m_taken;
};

}  // namespace zpk_test
