// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CExpatXMLParser.h"

#include <unistd.h>

#include <algorithm>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKReplacementFile.h"
#include "Base/ZPKTextDecoder.h"
#include "Common/CExpatTreeBuilder.h"
#include "Common/CXMLSerializer.h"

namespace varno_zpk {

namespace {

// A file goes through Expat in one piece unless it is huge: Expat then never has to look at the
// beginning of a token again.
constexpr std::size_t kLargestBlock = std::size_t{256} << 20;
constexpr std::size_t kSmallestBlock = 4096;

// A few file systems tell no size. A file that goes on and on beyond the size that it had when it was
// opened must not be read for ever.
constexpr std::size_t kLargestUntoldSize = std::size_t{16} << 20;

/// Readers see the old file or the new one, and a failure leaves the old one.
void replaceFile(const char* path, const std::string& contents) {
    ZPKResult<ZPKReplacementFile> file = ZPKReplacementFile::forPath(path);
    if (file && ZPKDescriptorIO::writeWhole(file->descriptor(), contents) && file->takeOverPermissions()) {
        file->commit().ignore();
    }
}

/// Has a builder take in what is in an encoding that Expat does not know.
class CDecodedInput {
public:
    CDecodedInput(ZPKTextDecoder& decoder, std::size_t inputSize)
        : m_decoder(decoder), m_builder("UTF-8", inputSize) {}

    void* GetBuffer(int size) {
        m_block.resize(static_cast<std::size_t>(size));
        return m_block.data();
    }

    bool ParseBuffer(int size, bool isLast) {
        std::string text;
        const std::string_view block(m_block.data(), static_cast<std::size_t>(size));
        return m_decoder.decode(block, text) && (!isLast || m_decoder.isBetweenCharacters()) &&
               m_builder.Parse(text.data(), static_cast<int>(text.size()), isLast);
    }

    std::unique_ptr<CXMLDocument> TakeDocument() { return m_builder.TakeDocument(); }

private:
    ZPKTextDecoder& m_decoder;
    CExpatTreeBuilder m_builder;
    std::string m_block;
};

/// Has `builder` take in the file from where it is open. False when it cannot be read, is malformed or grows
/// without end.
template <typename Builder>
bool readBlocks(const ZPKFileHandle& file, std::size_t blockSize, Builder& builder) {
    const auto fileSize = static_cast<std::size_t>(file.size());
    // One byte more than the file has, so that the first block already meets the end.
    std::size_t size = std::min(std::max(fileSize + 1, kSmallestBlock), blockSize);
    std::size_t left = std::max(fileSize, kLargestUntoldSize);
    for (bool isLast = false; !isLast;) {
        char* buffer = static_cast<char*>(builder.GetBuffer(static_cast<int>(size)));
        const ssize_t count =
            buffer != nullptr ? ZPKDescriptorIO::readWhole(file.descriptor(), buffer, size) : -1;
        if (count < 0 || static_cast<std::size_t>(count) > left) {
            return false;
        }
        left -= static_cast<std::size_t>(count);
        isLast = static_cast<std::size_t>(count) < size;
        if (!builder.ParseBuffer(static_cast<int>(count), isLast)) {
            return false;
        }
        // A token is looked at again with each block that it reaches into: blocks that grow keep that
        // in proportion to its length.
        size = std::min(2 * size, blockSize);
    }
    return true;
}

}  // namespace

CXMLDocument* CExpatXMLParser::CreateXMLDocumentWithPath(const char* path) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    return file ? CreateCXMLNodeWithFile(*file, kLargestBlock).release() : nullptr;
}

CXMLDocument* CExpatXMLParser::CreateXMLDocumentWithXMLContents(const char* xml) {
    return CreateCXMLNodeWithText(xml).release();
}

void CExpatXMLParser::WriteXMLDocumentToFile(CXMLDocument* doc, const char* path) {
    replaceFile(path, CXMLSerializer::Serialize(*doc));
}

void CExpatXMLParser::WriteXMLDocumentToString(CXMLDocument* doc, std::string& outXML) {
    outXML = CXMLSerializer::Serialize(*doc);
}

std::unique_ptr<CXMLDocument> CExpatXMLParser::CreateCXMLNodeWithFile(const ZPKFileHandle& file,
                                                                      std::size_t blockSize) {
    CExpatTreeBuilder builder(nullptr, static_cast<std::size_t>(file.size()));
    if (readBlocks(file, blockSize, builder)) {
        return builder.TakeDocument();
    }
    const std::unique_ptr<ZPKTextDecoder> decoder = ZPKTextDecoder::forEncoding(builder.GetForeignEncoding());
    if (decoder == nullptr || ::lseek(file.descriptor(), 0, SEEK_SET) != 0) {
        return nullptr;
    }
    CDecodedInput input(*decoder, static_cast<std::size_t>(file.size()));
    return readBlocks(file, blockSize, input) ? input.TakeDocument() : nullptr;
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
