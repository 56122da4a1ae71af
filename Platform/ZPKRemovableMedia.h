// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

class ZPKMountTable;

/// Which removable media are mounted on this machine. May be called from any thread.
class ZPKRemovableMedia {
public:
    ZPKRemovableMedia() = delete;

    /// Mount points of removable media, in mount order: the device is removable, or its drive takes
    /// removable media.
    static std::vector<std::string> mountPoints();

    /// The same for a given mount table; for tests.
    static std::vector<std::string> mountPoints(const ZPKMountTable& table);
};
