// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundleStringTableParser.h"

#include <stdio.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "Base/ZPKRegularFile.h"
#include "Common/CResourceBundleStringElement.h"

namespace varno_zpk {

namespace {

constexpr int kEndOfFile = -1;
constexpr std::size_t kBufferSize = 10240;
constexpr const char* kSyntaxError = "Syntax error.";
constexpr const char* kEscapeError = "Not supported escape sequence charactor.";

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Puts the reports out when a parse ends, however it ends. Buffered, as they are when standard output
/// is a file, they would come after the words of programs that run later, or go with a process that is
/// killed.
struct ReportFlusher {
    ~ReportFlusher() { std::fflush(stdout); }
};

/// A table that is open; null, with the cause in errno, for what cannot be one: a FIFO would be waited for, a
/// device read for ever.
std::FILE* openTable(const char* path) {
    ZPKFileDescriptor descriptor = ZPKRegularFile::open(path);
    std::FILE* const file = descriptor.isOpen() ? ::fdopen(descriptor.get(), "r") : nullptr;
    if (file != nullptr) {
        static_cast<void>(descriptor.release());
    }
    return file;
}

/// For each byte, whether it belongs to a run that can be taken in one step.
using RunBytes = std::array<bool, 256>;

constexpr RunBytes allBytesExcept(std::string_view excluded) {
    RunBytes bytes{};
    bytes.fill(true);
    for (const char c : excluded) {
        bytes[static_cast<unsigned char>(c)] = false;
    }
    return bytes;
}

constexpr RunBytes kUnquotedText = allBytesExcept(" \t\r\n\"/\\;=");
constexpr RunBytes kQuotedText = allBytesExcept("\t\r\n\"\\");
constexpr RunBytes kLineCommentText = allBytesExcept("\r\n");
constexpr RunBytes kBlockCommentText = allBytesExcept("\r\n*/");

}  // namespace

/// The state of one parse.
struct CResourceBundleStringTableParser::tagPRIVATE_DATA {
    const char* path;        // as passed to Parse; only for messages
    std::size_t filled;      // bytes now in the buffer
    std::size_t position;    // of the next byte to read, in the buffer
    unsigned int line;       // 1-based
    std::size_t bufferBase;  // file offset of the buffer's first byte
    std::size_t lineStart;   // file offset of the current line's first byte
    std::FILE* file;
    bool atEnd;  // a read has returned no bytes
    unsigned char buffer[kBufferSize];
    std::size_t stringOffset;        // file offset of the last string's first byte
    std::size_t keyOffset;           // the same of the key
    std::size_t valueOffset;         // file offset of what follows the key's delimiter
    IStringTableListener* listener;  // takes the faults; null: they are printed

    std::size_t BytesRead() const { return bufferBase + position; }

    /// Consumes the bytes ahead in the buffer that all belong to `bytes`; empty when the next one
    /// does not, or is not in the buffer yet. Most of a table is such runs: taking them whole is
    /// several times as fast as byte by byte.
    std::string_view TakeRun(const RunBytes& bytes) {
        const std::size_t start = position;
        std::size_t end = start;
        while (end < filled && bytes[buffer[end]]) {
            ++end;
        }
        position = end;
        return {reinterpret_cast<const char*>(buffer) + start, end - start};
    }
};

/// Opens the item, gives it to `action` and closes it.
template <typename Action>
int CResourceBundleStringTableParser::ParseItem(const char* inPath, Action action) {
    try {
        const std::unique_ptr<std::FILE, FileCloser> file(openTable(inPath));
        if (!file) {
            return errno;
        }
        action(file.get());
    } catch (...) {
        return -1;
    }
    return 0;
}

int CResourceBundleStringTableParser::Parse(const char* inPath, std::vector<CBaseObject*>& outElements) {
    return ParseItem(inPath, [&](std::FILE* file) { ParseInternal(file, inPath, outElements); });
}

int CResourceBundleStringTableParser::Parse(const char* inPath, IStringTableListener& listener) {
    return ParseItem(inPath, [&](std::FILE* file) {
        tagPRIVATE_DATA data{};
        data.path = inPath;
        data.file = file;
        data.listener = &listener;
        ParseEntries(data, [&](const std::string& key, const std::string& value) {
            listener.OnEntry(key, value, {data.keyOffset, data.valueOffset, data.BytesRead() - 1});
        });
    });
}

void CResourceBundleStringTableParser::ParseInternal(std::FILE* inFile, const char* inPath,
                                                     std::vector<CBaseObject*>& outElements) {
    tagPRIVATE_DATA data{};
    data.path = inPath;
    data.file = inFile;
    const ReportFlusher flusher;
    ParseEntries(data, [&](const std::string& key, const std::string& value) {
        auto element = std::make_unique<CResourceBundleStringElement>(key.c_str(), value.c_str());
        outElements.push_back(element.get());
        static_cast<void>(element.release());
    });
}

/// Gives `takeEntry` each entry of a file that has not been read from yet.
template <typename EntryTaker>
void CResourceBundleStringTableParser::ParseEntries(tagPRIVATE_DATA& data, EntryTaker takeEntry) {
    data.line = 1;
    SkipBom(data);

    std::string key;
    std::string value;
    for (;;) {
        const int keyDelimiter = GetNextString(data, key);
        data.keyOffset = data.stringOffset;
        data.valueOffset = data.BytesRead();
        if (keyDelimiter == kEndOfFile) {
            return;
        }
        if (keyDelimiter != '=' || GetNextString(data, value) != ';') {
            Log(data, kSyntaxError);
            continue;
        }
        if (!key.empty()) {
            takeEntry(key, value);
        }
    }
}

/// The next byte as 0 to 255, or `kEndOfFile`, which once given is given ever after. Throws beyond the
/// largest size of a table.
int CResourceBundleStringTableParser::ReadAndNextChar(tagPRIVATE_DATA& data) {
    if (data.position < data.filled) {
        return data.buffer[data.position++];
    }
    if (data.atEnd) {
        return kEndOfFile;
    }
    data.bufferBase += data.filled;
    data.position = 0;
    data.filled = std::fread(data.buffer, 1, kBufferSize, data.file);
    if (data.filled == 0) {
        data.atEnd = true;
        return kEndOfFile;
    }
    if (data.filled > kLargestTable - data.bufferBase) {
        throw std::length_error("string table");
    }
    return data.buffer[data.position++];
}

/// Makes the byte last read the next one again. The end of file cannot be put back.
void CResourceBundleStringTableParser::PutBack(tagPRIVATE_DATA& data) {
    if (!data.atEnd && data.position > 0) {
        --data.position;
    }
}

/// Skips a byte order mark. The three reads meet the end of a shorter file, and nothing can be put
/// back then: a file of one or two bytes has no entries, and no faults either.
void CResourceBundleStringTableParser::SkipBom(tagPRIVATE_DATA& data) {
    const int first = ReadAndNextChar(data);
    const int second = ReadAndNextChar(data);
    const int third = ReadAndNextChar(data);
    if (first == 0xEF && second == 0xBB && third == 0xBF) {
        return;
    }
    for (int count = 0; count < 3; ++count) {
        PutBack(data);
    }
}

/// Puts the text up to the next delimiter into `out` and returns the delimiter, or `kEndOfFile`.
int CResourceBundleStringTableParser::GetNextString(tagPRIVATE_DATA& data, std::string& out) {
    out.clear();
    data.stringOffset = 0;
    for (;;) {
        const int c = ReadAndNextChar(data);
        switch (c) {
            case kEndOfFile:
            case '=':
            case ';':
                return c;
            case ' ':
            case '\t':
                break;
            case '\r':
            case '\n':
                ProcessLineEnd(data, c);
                break;
            case '/':
                SkipComment(data);
                break;
            default:
                data.stringOffset = data.BytesRead() - 1;
                ExtractString(data, c, out);
                break;
        }
    }
}

/// Reports a fault at the byte last read.
void CResourceBundleStringTableParser::Log(const tagPRIVATE_DATA& data, const char* message) {
    const std::size_t readSoFar = data.BytesRead();
    if (data.listener != nullptr) {
        // Something has been read, or there would be no fault.
        data.listener->OnFault(message, readSoFar - 1);
        return;
    }
    const std::size_t column = readSoFar - data.lineStart;
    std::printf("[path=%s:line=%d:byte=%d]%s\n", data.path, static_cast<int>(data.line),
                static_cast<int>(column), message);
}

/// Counts a line that ended with `c`, together with the line feed of a CR LF pair.
void CResourceBundleStringTableParser::ProcessLineEnd(tagPRIVATE_DATA& data, int c) {
    if (c == '\r' && ReadAndNextChar(data) != '\n') {
        PutBack(data);
    }
    ++data.line;
    data.lineStart = data.BytesRead();
}

/// Goes on after a `/` outside quotes.
void CResourceBundleStringTableParser::SkipComment(tagPRIVATE_DATA& data) {
    switch (ReadAndNextChar(data)) {
        case '/':
            SkipLineComment(data);
            break;
        case '*':
            SkipBlockComment(data);
            break;
        default:
            Log(data, kSyntaxError);
            PutBack(data);
            break;
    }
}

void CResourceBundleStringTableParser::SkipLineComment(tagPRIVATE_DATA& data) {
    for (;;) {
        data.TakeRun(kLineCommentText);
        const int c = ReadAndNextChar(data);
        if (c == '\r' || c == '\n') {
            ProcessLineEnd(data, c);
            return;
        }
        if (c == kEndOfFile) {
            return;
        }
    }
}

void CResourceBundleStringTableParser::SkipBlockComment(tagPRIVATE_DATA& data) {
    // The opener's asterisk is no part of the closer.
    int previous = 0;
    for (;;) {
        if (!data.TakeRun(kBlockCommentText).empty()) {
            previous = 0;
        }
        const int c = ReadAndNextChar(data);
        if (c == kEndOfFile || (c == '/' && previous == '*')) {
            return;
        }
        if (c == '\r' || c == '\n') {
            ProcessLineEnd(data, c);
        }
        previous = c;
    }
}

/// Appends the text that starts with `c` to `out`, up to a delimiter, which stays the next byte, or
/// the end of file.
void CResourceBundleStringTableParser::ExtractString(tagPRIVATE_DATA& data, int c, std::string& out) {
    for (;; c = ReadAndNextChar(data)) {
        switch (c) {
            case kEndOfFile:
                return;
            case '=':
            case ';':
                PutBack(data);
                return;
            case '\\':
                ExtractEscapeSequenceChar(data, out);
                break;
            case '"':
                ExtractStringBetweenDoubleQuotations(data, out);
                break;
            case '/':
                SkipComment(data);
                break;
            case ' ':
            case '\t':
                break;
            case '\r':
            case '\n':
                ProcessLineEnd(data, c);
                break;
            default:
                out.push_back(static_cast<char>(c));
                out.append(data.TakeRun(kUnquotedText));
                break;
        }
    }
}

/// Appends the rest of a quoted section to `out`; the end of file ends it too.
void CResourceBundleStringTableParser::ExtractStringBetweenDoubleQuotations(tagPRIVATE_DATA& data,
                                                                            std::string& out) {
    for (;;) {
        out.append(data.TakeRun(kQuotedText));
        const int c = ReadAndNextChar(data);
        switch (c) {
            case kEndOfFile:
            case '"':
                return;
            case '\\':
                ExtractEscapeSequenceChar(data, out);
                break;
            case '\t':
                // A tab in a text has to be written as an escape, like a line break.
                break;
            case '\r':
            case '\n':
                ProcessLineEnd(data, c);
                break;
            default:
                // The first byte of a fresh block, which no run could see.
                out.push_back(static_cast<char>(c));
                break;
        }
    }
}

/// Appends the character that the escape stands for. An unknown escape is reported and its byte
/// read again as ordinary text.
void CResourceBundleStringTableParser::ExtractEscapeSequenceChar(tagPRIVATE_DATA& data, std::string& out) {
    const int c = ReadAndNextChar(data);
    switch (c) {
        case '"':
        case '\\':
            out.push_back(static_cast<char>(c));
            break;
        case 'n':
            out.push_back('\n');
            break;
        case 't':
            out.push_back('\t');
            break;
        default:
            Log(data, kEscapeError);
            PutBack(data);
            break;
    }
}

}  // namespace varno_zpk
