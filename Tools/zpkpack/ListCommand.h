// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"

namespace zpk_packager {

/// `list`: what both archives of a package hold, in the order in which they hold it.
class ListCommand : public Command {
public:
    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    std::string m_package;
    std::string m_format = "text";
    bool m_isLong = false;
};

}  // namespace zpk_packager
