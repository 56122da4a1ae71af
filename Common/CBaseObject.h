#pragma once

namespace varno_zpk {

/// Root of the objects that are owned through plain pointers and kept in vectors.
class CBaseObject {
public:
    CBaseObject() = default;
    /// May throw, so that an owner can tell a failed destruction from a finished one.
    virtual ~CBaseObject() noexcept(false) {}
};

}  // namespace varno_zpk
