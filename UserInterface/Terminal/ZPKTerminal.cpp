// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKEnvironment.h"
#include "Base/ZPKTerminalText.h"
#include "UserInterface/Terminal/ZPKFoldedText.h"
#include "UserInterface/Terminal/ZPKReadingOrder.h"
#include "UserInterface/Terminal/ZPKTextColumns.h"

namespace {

/// A line longer than this is nobody's answer; what is beyond is taken as the next line.
constexpr std::size_t kLongestLine = 4096;

/// Longer lines are hard to read; a terminal that does not tell its width has probably the other.
constexpr std::size_t kReadableColumns = 100;
constexpr std::size_t kUsualColumns = 80;

/// What is left of a text when only what a terminal draws is kept; tabs keep words apart.
std::string drawn(std::string text) {
    std::replace(text.begin(), text.end(), '\t', ' ');
    return ZPKTerminalText::harmless(text);
}

/// Failures do not count: whoever read the output may be gone.
void put(int descriptor, std::string_view text) {
    static_cast<void>(ZPKDescriptorIO::writeWhole(descriptor, text));
}

/// Diagnostics go through the standard streams' buffers; what was printed first must appear first.
void flushStandardStreams() {
    std::fflush(stdout);
    std::fflush(stderr);
}

bool isTerminal(int descriptor) {
    return ::isatty(descriptor) != 0;
}

/// Asks the terminals themselves: one has several names.
bool isSameTerminal(int one, int other) {
    unsigned int first = 0;
    unsigned int second = 0;
    return ::ioctl(one, TIOCGDEV, &first) == 0 && ::ioctl(other, TIOCGDEV, &second) == 0 && first == second;
}

std::string typeOfTerminal() {
    return ZPKEnvironment::value("TERM").value_or("dumb");
}

/// The columns to write in. The last one stays free, since terminals differ in what follows it.
std::size_t columnsOf(int descriptor) {
    winsize size{};
    const bool known = ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return std::max<std::size_t>(known ? size.ws_col : kUsualColumns, 2) - 1;
}

}  // namespace

std::string ZPKTerminal::line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return drawn(std::move(text));
}

ZPKTerminal::ZPKTerminal(int input, int output, int error)
    : m_input(input),
      m_output(output),
      m_error(error),
      m_sharesTerminal(isSameTerminal(output, error)),
      m_person(isTerminal(output) && !m_sharesTerminal ? output : error),
      m_isPersonTerminal(isTerminal(m_person)),
      m_interactive(isTerminal(input) && m_isPersonTerminal),
      m_isOutputTerminal(isTerminal(output)),
      m_rewrites(m_isOutputTerminal && typeOfTerminal() != "dumb"),
      m_obeys(typeOfTerminal() != "dumb" && !ZPKEnvironment::isSet("NO_COLOR")) {}

void ZPKTerminal::tell(const std::string& text) {
    endStatus();
    flushStandardStreams();
    if (!m_isPersonTerminal) {
        put(m_person, drawn(text));
        return;
    }
    if (m_told.empty()) {
        m_toldColumns = columnsOf(m_person);
    }
    m_told += drawn(text);
    std::string all = folded();
    // What stands there already does so for another width, if that has just changed.
    const bool goesOn = all.starts_with(m_toldAsFolded);
    put(m_person, goesOn ? std::string_view(all).substr(m_toldAsFolded.size()) : "\n" + all);
    m_toldAsFolded = std::move(all);
}

void ZPKTerminal::tellApart(const std::string& text) {
    tell((m_isPersonTerminal ? "\n" : "") + text);
}

std::string ZPKTerminal::folded() const {
    return ZPKReadingOrder::marked(ZPKFoldedText::of(m_told, std::min(m_toldColumns, kReadableColumns)));
}

void ZPKTerminal::refold() {
    const std::size_t columns = m_isPersonTerminal ? columnsOf(m_person) : 0;
    if (m_told.empty() || columns == m_toldColumns) {
        return;
    }
    m_toldColumns = columns;
    std::string all = folded();
    if (all == m_toldAsFolded) {
        return;
    }
    // Lines that a terminal has wrapped by itself stay above; one that cannot go up begins below.
    const auto up = std::count(m_toldAsFolded.begin(), m_toldAsFolded.end(), '\n');
    const std::string toStart =
        "\r" + (up > 0 ? "\x1b[" + std::to_string(up) + "A" : std::string()) + "\x1b[J";
    put(m_person, (m_obeys ? toStart : "\n") + all);
    m_toldAsFolded = std::move(all);
}

void ZPKTerminal::noteEcho(const std::string& line) {
    const std::string shown = drawn(line) + "\n";
    m_told += shown;
    m_toldAsFolded += shown;
    if (m_toldAsFolded != folded()) {
        forgetTold();
    }
}

void ZPKTerminal::forgetTold() {
    m_told.clear();
    m_toldAsFolded.clear();
}

void ZPKTerminal::print(const std::string& text) {
    endStatus();
    flushStandardStreams();
    forgetTold();
    put(m_output, m_isOutputTerminal ? ZPKReadingOrder::marked(drawn(text)) : drawn(text));
}

void ZPKTerminal::printError(const std::string& text) {
    endStatus();
    flushStandardStreams();
    put(m_error, drawn(text));
}

void ZPKTerminal::printStatus(const std::string& text) {
    const std::string line = ZPKTerminal::line(text);
    if (!m_rewrites) {
        print(line + "\n");
        return;
    }
    flushStandardStreams();
    forgetTold();
    put(m_output, "\r" + ZPKReadingOrder::marked(line) + restErased(ZPKTextColumns::of(line)));
    m_hasStatus = !line.empty();
}

std::string ZPKTerminal::restErased(std::size_t length) const {
    if (m_obeys) {
        return "\x1b[K";
    }
    const std::size_t columns = statusColumns();
    const std::size_t left = columns > length ? columns - length : 0;
    return std::string(left, ' ') + std::string(left, '\b');
}

void ZPKTerminal::endStatus() {
    if (m_hasStatus) {
        m_hasStatus = false;
        put(m_output, "\n");
    }
}

std::size_t ZPKTerminal::statusColumns() const {
    return columnsOf(m_output);
}

bool ZPKTerminal::readInput() {
    char block[512];
    const ssize_t count = ZPKDescriptorIO::readSome(m_input, block, sizeof(block));
    if (count <= 0) {
        return false;
    }
    m_received.append(block, static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> ZPKTerminal::takeLine() {
    const std::size_t end = m_received.find('\n');
    if (end == std::string::npos && m_received.size() < kLongestLine) {
        return std::nullopt;
    }
    const std::string line = m_received.substr(0, end);
    m_received.erase(0, end == std::string::npos ? end : end + 1);
    noteEcho(line);
    return line;
}
