// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Reads the input as a document; what could be read is cloned, written and read again, and must be
// the same tree each time.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "Common/CExpatTreeBuilder.h"
#include "Common/CExpatXMLParser.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLSerializer.h"
#include "Fuzz/InputInMemory.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"
#include "Platform/ZPKFileHandle.h"

namespace {

using namespace varno_zpk;
using zpk_fuzz::require;

constexpr std::size_t kMostOfEntities = std::size_t{64} << 20;

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

/// Expat takes these three for letters of a name in UTF-16 and Latin-1, and not in UTF-8.
bool hasDoubtfulLetter(std::string_view text) {
    constexpr std::string_view kLetters[] = {"\u00AA", "\u00B5", "\u00BA"};
    return std::any_of(std::begin(kLetters), std::end(kLetters), [text](std::string_view letter) {
        return text.find(letter) != std::string_view::npos;
    });
}

void checkRoundTrip(const CXMLDocument& document) {
    const std::string tree = treeText(document);
    const std::unique_ptr<CXMLNode> copy(document.Clone());
    const auto& copiedDocument = static_cast<const CXMLDocument&>(*copy);
    require(treeText(copiedDocument) == tree, "the copy is another");
    const std::string written = CXMLSerializer::Serialize(copiedDocument);
    const std::unique_ptr<CXMLDocument> again = CExpatXMLParser::CreateCXMLNodeWithText(written);
    if (again == nullptr && hasDoubtfulLetter(written)) {
        return;
    }
    require(again != nullptr, "what was written cannot be read");
    require(treeText(*again) == tree, "written and read again it is another");
}

/// Whoever is told where the elements stand finds a tag there, or the entity that holds it.
void checkPlaces(std::string_view input) {
    CExpatTreeBuilder builder(nullptr, input.size());
    builder.SetElementListener([input](const CXMLElement& element, const CExpatTreeBuilder::Place& place) {
        require(!element.GetNameString().empty(), "an element without a name");
        require(place.line > 0 && place.column > 0 && place.offset < input.size(), "an element in no place");
        const char begin = input[place.offset];
        require(input.front() != '<' || begin == '<' || begin == '&', "an element is elsewhere");
    });
    if (!builder.Parse(input.data(), static_cast<int>(input.size()), true) &&
        builder.GetForeignEncoding().empty()) {
        const CExpatTreeBuilder::Refusal refusal = builder.GetRefusal();
        require(!refusal.reason.empty() && refusal.place.line > 0 && refusal.place.column > 0,
                "a refusal in no place");
    }
}

/// As a file, the input's own words about its encoding count.
std::unique_ptr<CXMLDocument> readAsFile(std::string_view input, std::size_t blockSize) {
    static zpk_fuzz::InputInMemory held;
    const ZPKResult<ZPKFileHandle> file =
        ZPKFileHandle::forReadingAtPath(held.hold(input.data(), input.size()));
    require(static_cast<bool>(file), "a file that can be read fails");
    return CExpatXMLParser::CreateCXMLNodeWithFile(*file, blockSize);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    // Two trees at a time, and entities that are bounded by themselves.
    constexpr std::size_t kTimes = 1000;
    const zpk_fuzz::MemoryBudget budget(kMostOfEntities + zpk_fuzz::MemoryBudget::forInput(size, kTimes));
    constexpr std::size_t kLargestBlock = 64;
    const std::unique_ptr<CXMLDocument> documents[] = {CExpatXMLParser::CreateCXMLNodeWithText(input),
                                                       readAsFile(input, 1 + size % kLargestBlock)};
    for (const std::unique_ptr<CXMLDocument>& document : documents) {
        if (document != nullptr) {
            checkRoundTrip(*document);
        }
    }
    checkPlaces(input);
    return 0;
}
