// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace zpk_packager {

/// Reads the plain archive to its end and compares the items in it with those of `sourceFolder`,
/// which it holds under the top-level name `name`. Throws `std::runtime_error` naming the first
/// difference, or the damage.
void checkArchive(const std::string& archivePath, const std::string& sourceFolder, const std::string& name);

}  // namespace zpk_packager
