// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"
#include "Tools/zpkpack/PreviewPictures.h"

namespace zpk_packager {

/// `zpkpack preview`: pictures of what a package will show.
class PreviewCommand final : public Command {
public:
    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    PreviewOptions m_options;
    std::string m_folder;
};

}  // namespace zpk_packager
