// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/TextImport.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string_view>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKNearestName.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKReplacementFile.h"
#include "Common/ZPKCoreStringDefine.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/SourceText.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/TableEditor.h"
#include "Tools/zpkpack/WholeOutput.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

constexpr std::string_view kExtension = ".po";

[[noreturn]] void fail(const std::string& path, std::size_t line, const std::string& reason) {
    throw PackagerFailure(path + ":" + std::to_string(line), reason);
}

/// The names of the PO files in the folder, sorted.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    require(ZPKFileManager::contentsOfFolder(folder, names));
    std::erase_if(names, [](const std::string& name) { return !name.ends_with(kExtension); });
    std::sort(names.begin(), names.end());
    if (names.empty()) {
        throw PackagerFailure(folder, "there is no PO file in it");
    }
    return names;
}

bool isControl(char each) {
    return (static_cast<unsigned char>(each) < 0x20 && each != '\n' && each != '\t') || each == 0x7F;
}

}  // namespace

void TextImport::read(const std::string& folder) {
    for (const std::string& name : namesIn(folder)) {
        readFile(ZPKPath::join(folder, name), name.substr(0, name.size() - kExtension.size()));
    }
}

void TextImport::readFile(const std::string& path, const std::string& code) {
    const SourceTexts::Language* const language = m_texts.find(code);
    if (language == nullptr) {
        fail(path, 1, m_texts.folder() + " has no language " + code);
    }
    const POFile file = POFile::read(path);
    if (file.language != code) {
        fail(path, 1, "the language of the header is \"" + file.language + "\"");
    }
    std::map<std::string, std::size_t> lines;
    for (const POMessage& message : file.messages) {
        checkKey(path, message);
        const auto [before, isNew] = lines.try_emplace(message.context, message.line);
        if (!isNew) {
            fail(path, message.line,
                 "\"" + message.context + "\" is in line " + std::to_string(before->second) + ", too");
        }
        take(path, message, *language);
    }
    for (const char* const key : ZPKSTRING_KEYS) {
        if (lines.count(key) == 0) {
            fail(path, file.lines, "there is no message for \"" + std::string(key) + "\"");
        }
    }
}

void TextImport::checkKey(const std::string& path, const POMessage& message) const {
    const std::vector<std::string_view> keys(ZPKSTRING_KEYS.begin(), ZPKSTRING_KEYS.end());
    if (std::find(keys.begin(), keys.end(), message.context) == keys.end()) {
        const std::string_view near = ZPKNearestName::among(keys, message.context);
        fail(path, message.line,
             "nothing asks for the key \"" + message.context + "\"" +
                 (near.empty() ? "" : "; \"" + std::string(near) + "\" is known"));
    }
    if (message.id != m_texts.original(message.context)) {
        fail(path, message.line,
             "msgid is not what the table of " + m_texts.reference().code + " says for \"" + message.context +
                 "\"");
    }
}

/// What is not translated yet, or not for certain, changes nothing.
void TextImport::take(const std::string& path, const POMessage& message,
                      const SourceTexts::Language& language) {
    const FolderTables::Found shown = m_texts.find(language, message.context);
    if (message.isFuzzy || message.text.empty() ||
        (shown.entry != nullptr && shown.entry->text == message.text)) {
        return;
    }
    checkText(path, message);
    const FolderTables::Found own = language.tables.find(message.context);
    const std::vector<TableText>& tables = language.tables.tables();
    const std::string added = FolderTables::defaultTable(language.folder);
    const auto held = std::find_if(tables.begin(), tables.end(),
                                   [&](const TableText& each) { return each.path() == added; });
    const TableText* const table = own.table != nullptr ? own.table : held == tables.end() ? nullptr : &*held;
    Table& changed = m_tables[ZPKPath::join(
        language.code, ZPKPath::lastComponent(table == nullptr ? added : table->path()))];
    changed.before = table;
    changed.texts[message.context] = message.text;
}

void TextImport::checkText(const std::string& path, const POMessage& message) {
    if (std::any_of(message.text.begin(), message.text.end(), isControl)) {
        fail(path, message.line, "a control character has no place in a table");
    }
    if (message.context == ZPKSTRING_UPDATE_FAILURE && FolderTables::placeholdersIn(message.text) != 1) {
        fail(path, message.line, "\"%s\" must be in this text once");
    }
}

std::vector<std::string> TextImport::apply() const {
    std::vector<std::string> paths;
    if (m_tables.empty()) {
        return paths;
    }
    // Of a link, what it leads to is replaced.
    const std::string folder = ZPKPath::resolved(m_texts.folder());
    WholeOutput::make(OutputPlace(folder, true), [&](const std::string&, const std::string& made) {
        require(ZPKFileManager::copyItem(folder, made));
        for (const auto& [path, table] : m_tables) {
            if (!ZPKFileManager::isFolderNotFollowingLinks(ZPKPath::parent(ZPKPath::join(made, path)))) {
                throw PackagerFailure(ZPKPath::parent(ZPKPath::join(m_texts.folder(), path)),
                                      "it is a link, and belongs to another language");
            }
            write(ZPKPath::join(made, path), table);
        }
    });
    for (const auto& [path, table] : m_tables) {
        paths.push_back(ZPKPath::join(m_texts.folder(), path));
    }
    return paths;
}

std::string TextImport::edited(const Table& table) {
    TableEditor editor(table.before == nullptr ? "" : table.before->bytes());
    for (const auto& [key, text] : table.texts) {
        const TableText::Entry* const entry = table.before == nullptr ? nullptr : table.before->entry(key);
        if (entry != nullptr) {
            editor.replace(*entry, text);
        } else {
            editor.add(key, text);
        }
    }
    return editor.result();
}

void TextImport::write(const std::string& path, const Table& table) {
    const std::string bytes = edited(table);
    const std::string name =
        ZPKPath::join(ZPKPath::lastComponent(ZPKPath::parent(path)), ZPKPath::lastComponent(path));
    if (bytes.size() > SourceText::kLargestFile) {
        throw PackagerFailure(name, "it would become larger than 1 MiB");
    }
    ZPKResult<ZPKReplacementFile> file = ZPKReplacementFile::forPath(path);
    if (!file) {
        throw PackagerFailure(file.failure());
    }
    require(file->takeOverPermissions());
    if (!ZPKDescriptorIO::writeWhole(file->descriptor(), bytes)) {
        throw PackagerFailure::ofSystem(path, errno);
    }
    require(file->commit());
    // What stands at the end of a table may swallow what is put behind it.
    FindingList findings;
    const std::optional<TableText> after = TableText::read(path, findings);
    for (const auto& [key, text] : table.texts) {
        const TableText::Entry* const entry = after ? after->entry(key) : nullptr;
        if (entry == nullptr || entry->text != text) {
            throw PackagerFailure(name, "the text of \"" + key + "\" cannot be put into it");
        }
    }
}

}  // namespace zpk_packager
