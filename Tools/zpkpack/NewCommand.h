// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"
#include "Tools/zpkpack/PackageDescription.h"

namespace zpk_packager {

/// `new`: makes a package source to begin with.
class NewCommand : public Command {
public:
    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    PackageDescription description() const;

    std::string m_folder;
    std::string m_name;
    std::string m_identifier;
};

}  // namespace zpk_packager
