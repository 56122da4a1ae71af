// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// The three streams of the terminal front end: what is said to the person, the line that is rewritten in its
/// place, and the lines that the person types. Of the texts only what a terminal draws gets through, whoever
/// wrote them. Failures to write are ignored. Main thread only.
class ZPKTerminal {
public:
    /// The descriptors stay the caller's. `NO_COLOR` and `TERM` are looked at here.
    ZPKTerminal(int input, int output, int error);

    /// Whether a question can be asked: the person sees it on a terminal, and the input is one.
    bool isInteractive() const { return m_interactive; }

    /// Whether a status stands in one line that is rewritten: on a terminal that can do so.
    bool isRewriting() const { return m_rewrites; }

    /// Whether diagnostics are to be dim: they stand on the terminal that the person reads on, and it obeys.
    bool dimsDiagnostics() const { return m_sharesTerminal && m_obeys; }

    /// The text as one line: line feeds and tabs become blanks.
    static std::string line(std::string text);

    /// Says something to the person: on standard output where that is a terminal and standard error is not
    /// the same one, else on standard error. On a terminal the lines are folded, and right-to-left ones
    /// marked.
    void tell(const std::string& text);

    /// The same after an empty line where that is a terminal, which has other words above.
    void tellApart(const std::string& text);

    /// When the terminal has got another width since, folds anew what was said, back to the last status.
    void refold();

    /// Writes lines on standard output.
    void print(const std::string& text);

    /// Writes a diagnostic.
    void printError(const std::string& text);

    /// Prints a line that the next call rewrites, or a line of its own where that cannot be.
    void printStatus(const std::string& text);

    /// Ends the line being rewritten, if there is one.
    void endStatus();

    /// The columns that a status may take.
    std::size_t statusColumns() const;

    /// The descriptor to wait on for input.
    int input() const { return m_input; }

    /// Reads what there is, waiting for it if need be. False at the end of the input.
    bool readInput();

    /// The next complete line that was read, without its end.
    std::optional<std::string> takeLine();

private:
    std::string folded() const;
    /// Takes away what stands behind a line of so many columns: more of the one before, or what the terminal
    /// has joined to it when it became wider.
    std::string restErased(std::size_t length) const;
    /// The terminal shows what the person types by itself.
    void noteEcho(const std::string& line);
    void forgetTold();

    const int m_input;
    const int m_output;
    const int m_error;
    /// Both outputs are one terminal.
    const bool m_sharesTerminal;
    /// The output that the person reads.
    const int m_person;
    const bool m_isPersonTerminal;
    const bool m_interactive;
    const bool m_isOutputTerminal;
    const bool m_rewrites;
    /// Escape sequences may be sent to terminals.
    const bool m_obeys;
    std::string m_received;
    /// What was said since the last status, with the answers, and how it stands there.
    std::string m_told;
    std::string m_toldAsFolded;
    std::size_t m_toldColumns = 0;
    bool m_hasStatus = false;
};
