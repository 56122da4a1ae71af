// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"

namespace zpk_packager {

/// `verify`: whether a package still is what was built.
class VerifyCommand : public Command {
public:
    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    std::string m_package;
};

}  // namespace zpk_packager
