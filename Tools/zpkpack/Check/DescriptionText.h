// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Base/ZPKTextDecoder.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLElement.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/Check/SourceText.h"

namespace zpk_packager {

/// A description file as the launcher's own reader sees it, with the place of everything in it.
class DescriptionText {
public:
    /// Reports what keeps the launcher from reading the file at `path`, and gives null then. A file that is
    /// not there is nothing to report.
    static std::unique_ptr<DescriptionText> read(const std::string& path, FindingList& findings);

    const std::string& path() const { return m_path; }
    const varno_zpk::CXMLElement& root() const { return *m_document->GetRootElement(); }

    TextPlace placeOf(const varno_zpk::CXMLElement& element) const;
    /// Of the attribute's name where it can be told, else of its element.
    TextPlace placeOf(const varno_zpk::CXMLElement& element, std::string_view attribute) const;
    /// The same for any number of attributes of one element, asked in the document's order.
    TextPlace placeOfNext(const varno_zpk::CXMLElement& element, std::string_view attribute);

private:
    struct ElementPlace {
        TextPlace place;
        std::size_t offset;
    };

    DescriptionText(std::string path, std::string bytes);
    bool parse(const char* encoding, FindingList& findings);
    bool decode(ZPKTextDecoder& decoder, FindingList& findings);
    std::size_t offsetOfAttributes(const varno_zpk::CXMLElement& element) const;
    TextPlace placeAt(std::size_t offset, const varno_zpk::CXMLElement& element) const;

    std::string m_path;
    /// In UTF-8 where the file is in an encoding of before Unicode.
    SourceText m_text;
    std::unordered_map<const varno_zpk::CXMLElement*, ElementPlace> m_places;
    std::unique_ptr<varno_zpk::CXMLDocument> m_document;
    /// Where the search for the next attribute of an element goes on: a tag may be long.
    const varno_zpk::CXMLElement* m_searched = nullptr;
    std::size_t m_searchOffset = 0;
};

}  // namespace zpk_packager
