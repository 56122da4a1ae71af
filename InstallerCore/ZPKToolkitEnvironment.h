// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

class ZPKCarriedParts;

/// What the carried toolkit, and the libraries below it, find in the environment of this process. The
/// machine's settings are for its own toolkit: they name plug-ins, styles and files of another version.
/// Main thread only.
class ZPKToolkitEnvironment {
public:
    ZPKToolkitEnvironment() = delete;

    /// Sets the environment for a toolkit of these parts, after `ZPKEnvironment::keepForChildren`:
    /// - what is meant for another toolkit goes;
    /// - fonts are found as the bundle's own configuration says;
    /// - the bundle's keyboard data stand in where the machine has none;
    /// - a run-time folder without a name stands in where the session has none, for the toolkit would make
    ///   one and leave it;
    /// - without a message bus none is looked for, since that would start one that stays.
    static void set(const ZPKCarriedParts& parts);

    /// True for a variable that tells a toolkit of the machine where to look and what to load. Those that
    /// say what a person wants to see stay: the scale, or the platform, which must be a carried one.
    static bool isForAnotherToolkit(std::string_view name);
};
