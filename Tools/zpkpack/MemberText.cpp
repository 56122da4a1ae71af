// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MemberText.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "Base/ZPKTerminalText.h"
#include "Base/ZPKUnicode.h"

using zpk_archive::MemberDescription;
using zpk_archive::MemberType;

namespace zpk_packager {

namespace {

using Object = nlohmann::ordered_json;

struct TypeText {
    char letter;
    const char* name;
};

TypeText textOf(MemberType type) {
    switch (type) {
        case MemberType::RegularFile:
            return {'-', "file"};
        case MemberType::Folder:
            return {'d', "folder"};
        case MemberType::SymbolicLink:
            return {'l', "link"};
        case MemberType::HardLink:
            return {'h', "hardLink"};
        case MemberType::Other:
            break;
    }
    return {'?', "other"};
}

std::string permissionLetters(std::uint32_t permissions) {
    std::string letters = "rwxrwxrwx";
    for (std::size_t index = 0; index < letters.size(); ++index) {
        if ((permissions >> (letters.size() - 1 - index) & 1U) == 0) {
            letters[index] = '-';
        }
    }
    const auto mark = [&](std::uint32_t bit, std::size_t index, char with, char without) {
        if ((permissions & bit) != 0) {
            letters[index] = letters[index] == 'x' ? with : without;
        }
    };
    mark(04000, 2, 's', 'S');
    mark(02000, 5, 's', 'S');
    mark(01000, 8, 't', 'T');
    return letters;
}

/// Empty where the time is beyond every calendar.
std::string timeText(std::int64_t seconds, char between) {
    const std::time_t time = seconds;
    std::tm parts{};
    std::array<char, 64> text{};
    if (::gmtime_r(&time, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts) == 0) {
        return "";
    }
    std::string result = text.data();
    result[result.find(' ')] = between;
    return result;
}

std::string hexadecimal(const std::string& bytes) {
    std::string digits;
    for (const char byte : bytes) {
        std::array<char, 3> pair{};
        std::snprintf(pair.data(), pair.size(), "%02x", static_cast<unsigned char>(byte));
        digits += pair.data();
    }
    return digits;
}

}  // namespace

std::string MemberText::line(const MemberDescription& member) {
    return ZPKTerminalText::printable(member.name);
}

std::string MemberText::longLine(const MemberDescription& member) {
    std::string time = timeText(member.modifiedSeconds, ' ');
    if (time.empty()) {
        time = std::to_string(member.modifiedSeconds);
    }
    std::array<char, 80> columns{};
    std::snprintf(columns.data(), columns.size(), "%c%s %12llu %s ", textOf(member.type).letter,
                  permissionLetters(member.permissions).c_str(), static_cast<unsigned long long>(member.size),
                  time.c_str());
    std::string text = columns.data() + line(member);
    if (!member.linkTarget.empty()) {
        text += (member.type == MemberType::HardLink ? " = " : " -> ") +
                ZPKTerminalText::printable(member.linkTarget);
    }
    return text;
}

std::string MemberText::json(const MemberDescription& member, const std::string& archive) {
    std::array<char, 8> permissions{};
    std::snprintf(permissions.data(), permissions.size(), "%04o", member.permissions & 07777U);
    const std::string time = timeText(member.modifiedSeconds, 'T');
    Object object{
        {"archive", archive},         {"name", member.name}, {"type", textOf(member.type).name},
        {"mode", permissions.data()}, {"size", member.size}, {"modified", time.empty() ? time : time + "Z"}};
    if (!ZPKUnicode::isUTF8(member.name)) {
        object["nameBytes"] = hexadecimal(member.name);
    }
    if (!member.linkTarget.empty()) {
        object["target"] = member.linkTarget;
    }
    // In ASCII alone, so that nothing in a name can turn the text of a terminal around.
    return object.dump(-1, ' ', true, Object::error_handler_t::replace);
}

}  // namespace zpk_packager
