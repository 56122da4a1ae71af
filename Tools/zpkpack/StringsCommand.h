// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"
#include "Tools/zpkpack/SourceTexts.h"

namespace zpk_packager {

/// `strings`: what the languages of a source have and lack, and their way to translators and back.
class StringsCommand : public Command {
public:
    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    void exportTexts(const SourceTexts& texts, Console& console) const;
    void importTexts(const SourceTexts& texts, Console& console) const;

    std::string m_source;
    std::string m_format = "text";
    std::string m_exportFolder;
    std::string m_importFolder;
};

}  // namespace zpk_packager
