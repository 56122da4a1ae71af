// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Archive/AppleDouble.h"

namespace zpk_archive {

/// The `user.*` attributes of the open file or folder; empty where the file system has none.
/// Throws MemberFailure when they cannot be read.
AttributeMap readAttributes(int descriptor);

/// Sets the attributes of the file or folder behind a descriptor, which may be path-only, whatever its
/// permission bits. Throws MemberFailure when one cannot be set.
void writeAttributes(int descriptor, const AttributeMap& attributes);

}  // namespace zpk_archive
