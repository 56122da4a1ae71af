// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/ZPKFileDescriptor.h"

/// A lock of a name, which one process of this user holds at a time. The kernel keeps it, in no file, and
/// lets it go with the process that holds it, however that one ends; no program that the process starts
/// inherits it. One thread uses one.
class ZPKNamedLock {
public:
    /// Lets go what this object holds, and takes the name. False when it is held elsewhere, or the system has
    /// no lock to give. Of names that are longer than the system takes the beginnings count.
    ///
    /// The lock lies in the network name space of the process: those in another one have locks of their own.
    /// Whoever knows the name can hold it, another user, too.
    bool take(const std::string& name);

private:
    ZPKFileDescriptor m_socket;
};
