// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Reads the input as a document; what could be read is cloned, written and read again, and must be
// the same tree each time.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "Common/CExpatXMLParser.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLSerializer.h"
#include "Platform/ZPKFileHandle.h"

namespace {

using namespace varno_zpk;

/// The tree with everything that may differ after writing made equal: neighbouring texts become one.
void appendTree(std::string& out, const CXMLElement& element) {
    out += "<" + element.GetNameString();
    for (const CXMLNode* attribute : element.GetAttributes()) {
        out += '\0' + attribute->GetNameString() + '\0' + attribute->GetStringValueString();
    }
    out += '>';
    for (const CXMLNode* child : element.GetChildren()) {
        if (child->GetKind() == XMLKIND_ELEMENT) {
            out += '\0';
            appendTree(out, static_cast<const CXMLElement&>(*child));
            out += '\0';
        } else {
            out += child->GetStringValueString();
        }
    }
    out += '/';
}

std::string treeText(const CXMLDocument& document) {
    std::string out;
    appendTree(out, *document.GetRootElement());
    return out;
}

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void checkRoundTrip(const CXMLDocument& document) {
    const std::string tree = treeText(document);
    const std::unique_ptr<CXMLNode> copy(document.Clone());
    const auto& copiedDocument = static_cast<const CXMLDocument&>(*copy);
    require(treeText(copiedDocument) == tree);
    const std::string written = CXMLSerializer::Serialize(copiedDocument);
    const std::unique_ptr<CXMLDocument> again = CExpatXMLParser::CreateCXMLNodeWithText(written);
    require(again != nullptr);
    require(treeText(*again) == tree);
}

/// As a file, the input's own words about its encoding count.
std::unique_ptr<CXMLDocument> readAsFile(std::string_view input, std::size_t blockSize) {
    static const int kDescriptor = ::memfd_create("input", MFD_CLOEXEC);
    static const std::string kPath = "/proc/self/fd/" + std::to_string(kDescriptor);
    require(::ftruncate(kDescriptor, 0) == 0);
    require(::pwrite(kDescriptor, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()));
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(kPath);
    require(static_cast<bool>(file));
    return CExpatXMLParser::CreateCXMLNodeWithFile(*file, blockSize);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    constexpr std::size_t kLargestBlock = 64;
    const std::unique_ptr<CXMLDocument> documents[] = {CExpatXMLParser::CreateCXMLNodeWithText(input),
                                                       readAsFile(input, 1 + size % kLargestBlock)};
    for (const std::unique_ptr<CXMLDocument>& document : documents) {
        if (document != nullptr) {
            checkRoundTrip(*document);
        }
    }
    return 0;
}
