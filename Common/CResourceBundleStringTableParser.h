// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "Common/CBaseObject.h"
#include "Common/IStringTableListener.h"

namespace varno_zpk {

/// Reads a string table file, a sequence of `key = value;` entries with comments, quotes and
/// escapes, into a list of elements.
///
/// A syntax fault never ends the parse: it is reported on standard output as
/// `[path=...:line=...:byte=...]message`, and every well-formed entry still arrives. The reports are
/// out when a parse returns. Holds no state; made on the stack for one `Parse`.
class CResourceBundleStringTableParser {
public:
    /// Bytes. No table comes near it; what goes on beyond is damaged, and reading it ends there.
    static constexpr std::size_t kLargestTable = std::size_t{16} << 20;

    /// Appends the entries of the file at `inPath` to `outElements`, in file order, each as a new
    /// `CResourceBundleStringElement` that the owner of the list owns. Returns 0; the system's error
    /// number when the file cannot be opened, and what is no regular file never is; -1 when an
    /// exception ended the reading, as it does for a file that is too large, and then the entries
    /// before it stay in the list.
    int Parse(const char* inPath, std::vector<CBaseObject*>& outElements);

    /// The same with `listener` told of each entry and of each fault, in the file's order, in place of the
    /// list and the reports. Exceptions of the listener count like those of the reading.
    int Parse(const char* inPath, IStringTableListener& listener);

    /// The parse of an open file, read from where it stands; `inPath` only names it in messages.
    /// Exceptions pass, `std::length_error` for a file that is too large among them.
    void ParseInternal(std::FILE* inFile, const char* inPath, std::vector<CBaseObject*>& outElements);

private:
    struct tagPRIVATE_DATA;

    template <typename Action>
    static int ParseItem(const char* inPath, Action action);
    template <typename EntryTaker>
    static void ParseEntries(tagPRIVATE_DATA& data, EntryTaker takeEntry);
    static int ReadAndNextChar(tagPRIVATE_DATA& data);
    static void PutBack(tagPRIVATE_DATA& data);
    static void SkipBom(tagPRIVATE_DATA& data);
    static int GetNextString(tagPRIVATE_DATA& data, std::string& out);
    static void Log(const tagPRIVATE_DATA& data, const char* message);
    static void ProcessLineEnd(tagPRIVATE_DATA& data, int c);
    static void SkipComment(tagPRIVATE_DATA& data);
    static void SkipLineComment(tagPRIVATE_DATA& data);
    static void SkipBlockComment(tagPRIVATE_DATA& data);
    static void ExtractString(tagPRIVATE_DATA& data, int c, std::string& out);
    static void ExtractStringBetweenDoubleQuotations(tagPRIVATE_DATA& data, std::string& out);
    static void ExtractEscapeSequenceChar(tagPRIVATE_DATA& data, std::string& out);
};

}  // namespace varno_zpk
