// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>

#include "Tests/Support/TemporaryFolder.h"
#include "Tools/zpkpack/BuildOptions.h"

namespace zpk_test {

/// A small package source and a small launcher template in a folder of their own.
class PackagerFixture : public ::testing::Test {
protected:
    PackagerFixture();

    std::string source(const std::string& relative = "") const;
    std::string templateBundle(const std::string& relative = "") const;
    std::string output(const std::string& relative = "") const;

    zpk_packager::BuildOptions options() const;

    /// Makes the package; the failure's message, empty after success.
    std::string build(const zpk_packager::BuildOptions& options) const;

    /// What the action throws in a child process of a user without privileges, who owns everything in
    /// the folder.
    std::string failureAsOrdinaryUser(const std::function<void()>& action) const;
    std::string buildAsOrdinaryUser(const zpk_packager::BuildOptions& options) const;

    /// Relative paths of everything in the folder, in order.
    std::string listing() const;

    TemporaryFolder m_folder;
};

/// Bytes that no archive makes smaller, the same at each call.
std::string noise(std::size_t size);

/// What the action throws, as text; empty when it throws nothing.
std::string failureOf(const std::function<void()>& action);

}  // namespace zpk_test
