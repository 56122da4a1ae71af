// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// The volumes that the disc search looks at. May be called from any thread.
class ZPKRemovableVolumes {
public:
    virtual ~ZPKRemovableVolumes() = default;

    /// Mount points of removable media, in mount order.
    virtual std::vector<std::string> mountedRemovableMedia() const;

    /// True when the volume mounted at `path` is an optical disc.
    virtual bool isCDMediaAtPath(const std::string& path) const;
};
