// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"

namespace zpk_packager {

/// `check`: looks for what a package would suffer from on somebody else's machine.
class CheckCommand : public Command {
public:
    CLI::App& declare(CLI::App& program) override;

    /// `Failure` where there are errors, and warnings where they count.
    ExitStatus run(Console& console) override;

private:
    ExitStatus explain(Console& console) const;
    ExitStatus check(Console& console) const;

    std::string m_package;
    std::string m_format = "text";
    std::string m_explained;
    bool m_isStrict = false;
};

}  // namespace zpk_packager
