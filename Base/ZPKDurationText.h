// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <string>

/// A time that has passed, in minutes and seconds, and in hours where there are any: "0:07", "61:01:01".
std::string ZPKDurationText(std::chrono::seconds elapsed);
