// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/TextExport.h"

#include <algorithm>
#include <vector>

#include "Base/ZPKPath.h"
#include "Base/ZPKTerminalText.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SourceWriter.h"
#include "Tools/zpkpack/TableComments.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

constexpr unsigned int kFileMode = 0644;

/// Whether the text is one of `printf` as far as the launcher's own replacing is.
bool isFormat(const std::string& text) {
    return FolderTables::placeholdersIn(text) == 1 && std::count(text.begin(), text.end(), '%') == 1;
}

/// What the tools of gettext refuse in a translation that counts.
bool fits(const POMessage& message) {
    const auto edges = [](const std::string& text) {
        return std::pair(text.starts_with('\n'), text.ends_with('\n'));
    };
    return message.text.empty() || ((!message.isFormat || isFormat(message.text)) &&
                                    (message.id.empty() || edges(message.id) == edges(message.text)));
}

}  // namespace

void TextExport::writeTo(const std::string& folder) const {
    SourceWriter::makeFolder(folder);
    for (const SourceTexts::Language& language : m_texts.languages()) {
        if (ZPKTerminalText::printable(language.code) != language.code) {
            throw PackagerFailure(language.folder, "the name of the folder is no code of a language");
        }
        SourceWriter::writeFile(ZPKPath::join(folder, language.code + ".po"), fileOf(language).bytes(),
                                kFileMode);
    }
}

POFile TextExport::fileOf(const SourceTexts::Language& language) const {
    POFile file{language.code, {}, 0};
    for (const char* const key : ZPKSTRING_KEYS) {
        file.messages.push_back(messageOf(language, key));
    }
    return file;
}

POMessage TextExport::messageOf(const SourceTexts::Language& language, const std::string& key) const {
    POMessage message{key, m_texts.original(key), "", false, false, "", 0};
    const FolderTables::Found own = language.tables.find(key);
    if (own.entry != nullptr) {
        message.text = own.entry->text;
    }
    const FolderTables::Found original = m_texts.find(m_texts.reference(), key);
    if (original.entry != nullptr) {
        message.comment = ZPKTerminalText::harmless(
            TableComments::above(original.table->bytes(), original.entry->place.line));
    }
    message.isFormat = key == ZPKSTRING_UPDATE_FAILURE && isFormat(message.id);
    message.isFuzzy = !fits(message);
    return message;
}

}  // namespace zpk_packager
