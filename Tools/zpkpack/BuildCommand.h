// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tools/zpkpack/BuildOptions.h"
#include "Tools/zpkpack/Command.h"

namespace zpk_packager {

/// `build`: makes a package of a package source.
class BuildCommand : public Command {
public:
    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    /// Tells the errors that the checks of the source have found, and warnings to who wants to know all;
    /// false where there are errors.
    bool isSound(Console& console) const;

    BuildOptions m_options;
};

}  // namespace zpk_packager
