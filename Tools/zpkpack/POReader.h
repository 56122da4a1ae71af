// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Tools/zpkpack/POFile.h"

namespace zpk_packager {

/// Reads one PO file. Made for one `read`.
class POReader {
public:
    /// `bytes` outlive the object; `path` only names them.
    POReader(std::string path, std::string_view bytes);

    /// Throws `PackagerFailure` with path and line.
    POFile read();

private:
    /// What the last string belongs to.
    enum class Part { None, Context, Id, Text };

    void checkBytes();
    void readLine(std::string_view line);
    void readComment(std::string_view line);
    void readKeyword(std::string_view line);
    void begin(Part part);
    void readStrings(std::string_view line);
    std::string_view readString(std::string_view line, std::string& out) const;
    std::string_view readEscape(std::string_view rest, std::string& out) const;
    std::string_view readNumber(std::string_view rest, std::string& out) const;
    std::string& current();
    void finishMessage();
    void takeHeader();
    std::string headerField(const std::string& name) const;
    [[noreturn]] void fail(const std::string& reason, std::size_t line = 0) const;

    std::string m_path;
    std::string_view m_bytes;
    std::size_t m_line = 0;
    Part m_part = Part::None;
    bool m_hasContext = false;
    bool m_hasHeader = false;
    bool m_isNextFuzzy = false;
    POMessage m_message;
    POFile m_file;
};

}  // namespace zpk_packager
