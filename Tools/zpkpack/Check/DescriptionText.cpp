// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/DescriptionText.h"

#include <utility>

#include "Common/CExpatTreeBuilder.h"
#include "Tools/zpkpack/Check/CheckedFile.h"

using namespace varno_zpk;

namespace zpk_packager {

namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

/// Where the attribute's name begins, searched for from `at` on, which is in a tag and in no value;
/// `kNowhere` where it cannot be told.
std::size_t offsetOfAttribute(std::string_view text, std::size_t at, std::string_view name) {
    while (at < text.size()) {
        at = text.find_first_not_of(" \t\r\n", at);
        const std::size_t end = at < text.size() ? text.find_first_of(" \t\r\n=/>", at) : kNowhere;
        if (end >= text.size()) {
            break;
        }
        if (text.substr(at, end - at) == name) {
            return at;
        }
        const std::size_t quote = text.find_first_of("\"'>", end);
        if (quote >= text.size() || text[quote] == '>') {
            break;
        }
        const std::size_t closing = text.find(text[quote], quote + 1);
        at = closing == kNowhere ? kNowhere : closing + 1;
    }
    return kNowhere;
}

}  // namespace

std::unique_ptr<DescriptionText> DescriptionText::read(const std::string& path, FindingList& findings) {
    std::optional<std::string> bytes = CheckedFile::read(path, findings);
    if (!bytes) {
        return nullptr;
    }
    std::unique_ptr<DescriptionText> text(new DescriptionText(path, std::move(*bytes)));
    return text->parse(nullptr, findings) ? std::move(text) : nullptr;
}

DescriptionText::DescriptionText(std::string path, std::string bytes)
    : m_path(std::move(path)), m_text(std::move(bytes)) {}

/// `encoding` overrides what the text says about itself unless it is null.
bool DescriptionText::parse(const char* encoding, FindingList& findings) {
    const std::string& bytes = m_text.bytes();
    CExpatTreeBuilder builder(encoding, bytes.size());
    builder.SetElementListener([this](const CXMLElement& element, const CExpatTreeBuilder::Place& place) {
        m_places[&element] = {{place.line, place.column}, place.offset};
    });
    if (!builder.Parse(bytes.data(), static_cast<int>(bytes.size()), true)) {
        if (const auto decoder = ZPKTextDecoder::forEncoding(builder.GetForeignEncoding())) {
            return decode(*decoder, findings) && parse("UTF-8", findings);
        }
        const CExpatTreeBuilder::Refusal refusal = builder.GetRefusal();
        findings.add(refusal.isOfEncoding ? "xml-encoding" : "xml-syntax", m_path,
                     "the launcher cannot read this: " + refusal.reason,
                     {refusal.place.line, refusal.place.column});
        return false;
    }
    m_document = builder.TakeDocument();
    return true;
}

bool DescriptionText::decode(ZPKTextDecoder& decoder, FindingList& findings) {
    std::string text;
    const bool isRead = decoder.decode(m_text.bytes(), text) && decoder.isBetweenCharacters();
    m_text = SourceText(std::move(text));
    if (!isRead) {
        findings.add("xml-encoding", m_path, "the bytes from here on are not in the encoding that it names",
                     m_text.placeOf(m_text.bytes().size()));
    }
    return isRead;
}

TextPlace DescriptionText::placeOf(const CXMLElement& element) const {
    return m_places.at(&element).place;
}

TextPlace DescriptionText::placeOf(const CXMLElement& element, std::string_view attribute) const {
    return placeAt(offsetOfAttribute(m_text.bytes(), offsetOfAttributes(element), attribute), element);
}

TextPlace DescriptionText::placeOfNext(const CXMLElement& element, std::string_view attribute) {
    if (m_searched != &element) {
        m_searched = &element;
        m_searchOffset = offsetOfAttributes(element);
    }
    m_searchOffset = offsetOfAttribute(m_text.bytes(), m_searchOffset, attribute);
    return placeAt(m_searchOffset, element);
}

std::size_t DescriptionText::offsetOfAttributes(const CXMLElement& element) const {
    const std::string& bytes = m_text.bytes();
    const std::size_t start = m_places.at(&element).offset;
    const bool isTag = start < bytes.size() && bytes[start] == '<';
    return isTag ? bytes.find_first_of(" \t\r\n/>", start) : kNowhere;
}

TextPlace DescriptionText::placeAt(std::size_t offset, const CXMLElement& element) const {
    return offset == kNowhere ? placeOf(element) : m_text.placeOf(offset);
}

}  // namespace zpk_packager
