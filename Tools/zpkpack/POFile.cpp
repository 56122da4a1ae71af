// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/POFile.h"

#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>

#include "Base/ZPKRegularFile.h"
#include "Tools/zpkpack/POReader.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/QuotedText.h"

namespace zpk_packager {

namespace {

/// Bytes; a table that may be checked comes out smaller, however it is escaped.
constexpr std::size_t kLargestFile = std::size_t{16} << 20;

/// One string a line of the text, as translators are used to.
std::string field(const std::string& keyword, std::string_view text) {
    const std::size_t first = text.find('\n');
    if (first == std::string_view::npos || first + 1 == text.size()) {
        return keyword + " " + QuotedText::of(text) + "\n";
    }
    std::string lines = keyword + " \"\"\n";
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n') + 1);
        const std::string_view piece = line.empty() ? text : line;
        lines += QuotedText::of(piece) + "\n";
        text.remove_prefix(piece.size());
    }
    return lines;
}

std::string commentLines(std::string_view comment) {
    std::string lines;
    while (!comment.empty()) {
        const std::string_view line = comment.substr(0, comment.find('\n'));
        lines += "#. " + std::string(line) + "\n";
        comment.remove_prefix(line.size() == comment.size() ? line.size() : line.size() + 1);
    }
    return lines;
}

std::string flagLine(const POMessage& message) {
    if (!message.isFuzzy && !message.isFormat) {
        return "";
    }
    return std::string("#") + (message.isFuzzy ? ", fuzzy" : "") + (message.isFormat ? ", c-format" : "") +
           "\n";
}

}  // namespace

POFile POFile::read(const std::string& path) {
    const std::optional<std::string> bytes = ZPKRegularFile::contents(path, kLargestFile);
    if (!bytes) {
        throw PackagerFailure::ofSystem(path + ":1", errno);
    }
    return POReader(path, *bytes).read();
}

std::string POFile::bytes() const {
    // The fields that the format asks for; who translates fills in the rest.
    std::string text = field("msgid", "") + field("msgstr",
                                                  "Project-Id-Version: \n"
                                                  "PO-Revision-Date: \n"
                                                  "Last-Translator: \n"
                                                  "Language-Team: \n"
                                                  "Language: " +
                                                      language +
                                                      "\n"
                                                      "MIME-Version: 1.0\n"
                                                      "Content-Type: text/plain; charset=UTF-8\n"
                                                      "Content-Transfer-Encoding: 8bit\n"
                                                      "X-Generator: zpkpack\n");
    for (const POMessage& message : messages) {
        text += "\n" + commentLines(message.comment) + flagLine(message) + field("msgctxt", message.context) +
                field("msgid", message.id) + field("msgstr", message.text);
    }
    return text;
}

}  // namespace zpk_packager
