// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CExpatXMLParser.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "Common/CAtomicFile.h"
#include "Common/CExpatTreeBuilder.h"
#include "Common/CXMLSerializer.h"

namespace varno_zpk {

namespace {

// A file goes through Expat in one piece unless it is huge: Expat then never has to look at the
// beginning of a token again.
constexpr std::size_t kLargestBlock = std::size_t{256} << 20;
constexpr std::size_t kSmallestBlock = 4096;

/// Reads until `size` bytes are there or the input ends; -1 when it cannot be read.
ssize_t readBlock(int descriptor, char* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(descriptor, buffer + done, size - done);
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return -1;
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return static_cast<ssize_t>(done);
}

}  // namespace

CXMLDocument* CExpatXMLParser::CreateXMLDocumentWithPath(const char* path) {
    // Without waiting: the path may lead to a pipe that nobody writes.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        return nullptr;
    }
    const struct Closer {
        int descriptor;
        ~Closer() { close(descriptor); }
    } closer{descriptor};
    return CreateCXMLNodeWithFile(descriptor, kLargestBlock).release();
}

CXMLDocument* CExpatXMLParser::CreateXMLDocumentWithXMLContents(const char* xml) {
    return CreateCXMLNodeWithText(xml).release();
}

void CExpatXMLParser::WriteXMLDocumentToFile(CXMLDocument* doc, const char* path) {
    static_cast<void>(CAtomicFile::Replace(path, CXMLSerializer::Serialize(*doc)));
}

void CExpatXMLParser::WriteXMLDocumentToString(CXMLDocument* doc, std::string& outXML) {
    outXML = CXMLSerializer::Serialize(*doc);
}

std::unique_ptr<CXMLDocument> CExpatXMLParser::CreateCXMLNodeWithFile(int descriptor, std::size_t blockSize) {
    struct stat info;
    if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        return nullptr;
    }
    const auto fileSize = static_cast<std::size_t>(info.st_size);
    // One byte more than the file has, so that the first block already meets the end.
    const std::size_t size = std::min(std::max(fileSize + 1, kSmallestBlock), blockSize);
    CExpatTreeBuilder builder(nullptr, fileSize);
    for (bool isLast = false; !isLast;) {
        char* buffer = static_cast<char*>(builder.GetBuffer(static_cast<int>(size)));
        const ssize_t count = buffer != nullptr ? readBlock(descriptor, buffer, size) : -1;
        if (count < 0) {
            return nullptr;
        }
        isLast = static_cast<std::size_t>(count) < size;
        if (!builder.ParseBuffer(static_cast<int>(count), isLast)) {
            return nullptr;
        }
    }
    return builder.TakeDocument();
}

std::unique_ptr<CXMLDocument> CExpatXMLParser::CreateCXMLNodeWithText(std::string_view text) {
    CExpatTreeBuilder builder("UTF-8", text.size());
    bool isLast = false;
    while (!isLast) {
        const std::string_view block = text.substr(0, kLargestBlock);
        text.remove_prefix(block.size());
        isLast = text.empty();
        if (!builder.Parse(block.data(), static_cast<int>(block.size()), isLast)) {
            return nullptr;
        }
    }
    return builder.TakeDocument();
}

}  // namespace varno_zpk
