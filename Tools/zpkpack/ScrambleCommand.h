// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Command.h"

namespace zpk_packager {

/// `scramble` and `unscramble`: the rotation of a package's archives alone.
class ScrambleCommand : public Command {
public:
    enum class Direction { Scramble, Unscramble };

    explicit ScrambleCommand(Direction direction) : m_direction(direction) {}

    CLI::App& declare(CLI::App& program) override;
    ExitStatus run(Console& console) override;

private:
    void rotate(const std::string& made) const;

    Direction m_direction;
    std::string m_source;
    std::string m_destination;
    bool m_replace = false;
};

}  // namespace zpk_packager
