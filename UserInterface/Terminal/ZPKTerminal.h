// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// The three streams of the terminal front end, and the line that is still being rewritten. Of the texts
/// only what a terminal draws gets through, whoever wrote them. Failures to write are ignored. Main
/// thread only.
class ZPKTerminal {
public:
    /// The descriptors stay the caller's.
    ZPKTerminal(int input, int output, int error);

    /// Whether a question can be asked: both the input and the output are terminals.
    bool isInteractive() const { return m_interactive; }

    /// The text as one line: line feeds and tabs become blanks.
    static std::string line(std::string text);

    /// Prints a text of any number of lines.
    void print(const std::string& text);
    void printError(const std::string& text);

    /// Prints a line that the next call rewrites. On an output that cannot rewrite it, or that is
    /// too narrow for it, each call prints a line of its own.
    void printStatus(const std::string& text);

    /// Ends the line being rewritten, if there is one.
    void endStatus();

    /// The descriptor to wait on for input.
    int input() const { return m_input; }

    /// Reads what there is, waiting for it if need be. False at the end of the input.
    bool readInput();

    /// The next complete line that was read, without its end.
    std::optional<std::string> takeLine();

private:
    bool canRewrite(const std::string& line) const;

    const int m_input;
    const int m_output;
    const int m_error;
    const bool m_interactive;
    const bool m_rewrites;
    std::string m_received;
    std::size_t m_statusLength = 0;
};
