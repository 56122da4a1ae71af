// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What the toolkit takes from the bundle that carries it. `frameworks` is the folder of the carried parts,
/// any bytes. Main thread only.
class ZPKCarriedToolkit {
public:
    ZPKCarriedToolkit() = delete;

    /// Before the application object is made: the toolkit has the plug-ins of the bundle that its
    /// displays need, and looks for no others anywhere. One that cannot be opened is left out.
    static void usePlugIns(const std::string& frameworks);

    /// After that: the carried font, if the machine has none.
    static void useFontWhereThereIsNone(const std::string& frameworks);
};
