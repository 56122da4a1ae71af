// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

namespace varno_zpk {

/// Root of the objects that are owned through plain pointers and kept in vectors.
class CBaseObject {
public:
    CBaseObject() = default;
    /// May throw, so that an owner can tell a failed destruction from a finished one. A class with
    /// another base whose destructor may not throw declares its own `noexcept`.
    virtual ~CBaseObject() noexcept(false) {}
};

}  // namespace varno_zpk
