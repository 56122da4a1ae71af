// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Archive/Archive.h"
#include "Tools/zpkpack/Console.h"

namespace zpk_packager {

/// Says each error of the archive library at once.
class ConsoleErrorSink : public zpk_archive::ErrorSink {
public:
    /// `console` outlives the sink.
    explicit ConsoleErrorSink(Console& console) : m_console(console) {}

    void error(const std::string& name, const std::string& reason) override {
        m_console.error(name + ": " + reason);
    }
    void warning(const std::string& name, const std::string& reason) override {
        m_console.note(name + ": " + reason);
    }

private:
    Console& m_console;
};

}  // namespace zpk_packager
