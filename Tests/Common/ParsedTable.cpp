// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Common/ParsedTable.h"

#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundleStringElement.h"
#include "Common/CResourceBundleStringTableParser.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

namespace zpk_test {

using varno_zpk::CBaseObject;
using varno_zpk::CBaseObjectUtil;
using varno_zpk::CResourceBundleStringElement;
using varno_zpk::CResourceBundleStringTableParser;

std::ostream& operator<<(std::ostream& stream, const ParsedTable& table) {
    stream << "result " << table.result << "\n";
    for (const auto& [key, value] : table.entries) {
        stream << "'" << key << "'='" << value << "'\n";
    }
    return stream << "standard output:\n"
                  << table.standardOutput << "standard error:\n"
                  << table.standardError;
}

ParsedTable parseFile(const std::string& path) {
    ParsedTable table;
    std::vector<CBaseObject*> elements;
    const CapturedStreams streams = captureStreams([&] {
        CResourceBundleStringTableParser parser;
        table.result = parser.Parse(path.c_str(), elements);
    });
    table.standardOutput = streams.standardOutput;
    table.standardError = streams.standardError;
    for (CBaseObject* object : elements) {
        const auto* element = DOWN_CAST(CResourceBundleStringElement*, object);
        table.entries.emplace_back(element->GetKey(), element->GetValue());
    }
    CBaseObjectUtil::Destroy(elements);
    return table;
}

ParsedTable parseContents(const std::string& path, const std::string& contents) {
    writeFile(path, contents);
    return parseFile(path);
}

std::string faultLine(const std::string& path, int line, int byte, const std::string& message) {
    return "[path=" + path + ":line=" + std::to_string(line) + ":byte=" + std::to_string(byte) + "]" +
           message + "\n";
}

}  // namespace zpk_test
