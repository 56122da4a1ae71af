// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"

namespace zpk_packager {

/// `extract`: makes a package source of a package.
class ExtractCommand : public Command {
public:
    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    std::string m_package;
    std::string m_folder;
};

}  // namespace zpk_packager
