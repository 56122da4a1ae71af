// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

#include "Archive/Archive.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_packager {

/// A copy of one member's data in a file without a name, which is gone with the object. One thread.
class MemberCopy {
public:
    /// What fills the copy, to be used while the object is there; an empty function for a member that is
    /// larger than any program. Throws `PackagerFailure` when there is no place for it.
    zpk_archive::DataTaker taker(std::uint64_t size);

    void clear();

    /// Whether there is a copy, to its last byte.
    bool isWhole() const { return m_file.isOpen() && m_size == m_wanted; }

    /// For reading from any place; -1 without a copy.
    int descriptor() const { return m_file.get(); }

private:
    ZPKFileDescriptor m_file;
    std::uint64_t m_wanted = 0;
    std::uint64_t m_size = 0;
};

}  // namespace zpk_packager
