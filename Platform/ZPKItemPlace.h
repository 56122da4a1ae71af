// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKPath.h"

/// Where an item stands: the open folder that holds it, and its name there. For operations on the item
/// itself, which may be a link or missing. One thread uses one place.
class ZPKItemPlace {
public:
    /// Opens the folder in which the last component of `path` stands, or takes it as it is held. Fails when
    /// that folder is not there, and for "", "/" and paths that end in "." or "..", which name no item of a
    /// folder.
    static ZPKResult<ZPKItemPlace> ofPath(const std::string& path);

    const std::string& path() const { return m_path; }

    /// Open as a place only (`O_PATH`), as long as this object is there.
    int folder() const { return m_opened.isOpen() ? m_opened.get() : m_held; }
    const std::string& name() const { return m_name; }

    /// The path of what stands at `relative` below this item, "" being the item itself; for people to
    /// read.
    std::string pathBelow(const std::string& relative) const { return ZPKPath::join(m_path, relative); }

private:
    ZPKItemPlace(std::string path, ZPKFileDescriptor opened, int held, std::string name)
        : m_path(std::move(path)), m_opened(std::move(opened)), m_held(held), m_name(std::move(name)) {}

    std::string m_path;
    ZPKFileDescriptor m_opened;
    /// Where none was opened.
    int m_held;
    std::string m_name;
};
