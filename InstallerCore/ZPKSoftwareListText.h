// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// The message that lists the products a package applies to. `format` is a localized text whose
/// first "%s" receives the names, indented by two blanks, one a line; "%%" stands for "%". A format
/// comes from a file that anybody may have written, so any other "%" is text and nothing that was
/// not passed is ever read.
std::string ZPKSoftwareListText(const std::string& format, const std::vector<std::string>& softwares);
