// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLSerializer.h"

#include <cstddef>
#include <string_view>

#include "Common/CXMLElement.h"

namespace varno_zpk {

namespace {

constexpr std::string_view DECLARATION = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr std::size_t BLANKS_PER_LEVEL = 4;

std::string_view TextReference(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        default:
            return {};
    }
}

std::string_view ValueReference(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '"':
            return "&quot;";
        default:
            return {};
    }
}

void AppendEscaped(std::string& out, const std::string& text, std::string_view (*referenceOf)(char)) {
    for (const char character : text) {
        const std::string_view reference = referenceOf(character);
        if (reference.empty()) {
            out += character;
        } else {
            out += reference;
        }
    }
}

std::string WithoutCarriageReturns(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        if (character == '\r') {
            result += "&#xD;";
        } else {
            result += character;
        }
    }
    return result;
}

bool HasTextChild(const CXMLElement& element) {
    return element.GetFirstChildText() != nullptr;
}

void StartLine(std::string& out, std::size_t level) {
    out += '\n';
    out.append(level * BLANKS_PER_LEVEL, ' ');
}

void AppendAttributes(std::string& out, const CXMLElement& element) {
    for (const CXMLNode* attribute : element.GetAttributes()) {
        out += ' ';
        out += attribute->GetNameString();
        out += "=\"";
        AppendEscaped(out, attribute->GetStringValueString(), ValueReference);
        out += '"';
    }
}

void AppendElement(std::string& out, const CXMLElement& element, std::size_t level, bool isInline);

/// Kinds other than elements and text leave no trace.
void AppendChildren(std::string& out, const CXMLElement& element, std::size_t level, bool isInline) {
    for (const CXMLNode* child : element.GetChildren()) {
        if (child->GetKind() == XMLKIND_TEXT) {
            AppendEscaped(out, child->GetStringValueString(), TextReference);
        } else if (child->GetKind() == XMLKIND_ELEMENT) {
            if (!isInline) {
                StartLine(out, level);
            }
            AppendElement(out, static_cast<const CXMLElement&>(*child), level, isInline);
        }
    }
}

void AppendElement(std::string& out, const CXMLElement& element, std::size_t level, bool isInline) {
    out += '<';
    out += element.GetNameString();
    AppendAttributes(out, element);
    const bool areChildrenInline = isInline || HasTextChild(element);
    const std::size_t startOfChildren = out.size();
    out += '>';
    AppendChildren(out, element, level + 1, areChildrenInline);
    if (out.size() == startOfChildren + 1) {
        out.back() = '/';
        out += '>';
        return;
    }
    if (!areChildrenInline) {
        StartLine(out, level);
    }
    out += "</";
    out += element.GetNameString();
    out += '>';
}

}  // namespace

std::string CXMLSerializer::Serialize(const CXMLDocument& document) {
    std::string out(DECLARATION);
    if (const CXMLElement* root = document.GetRootElement()) {
        StartLine(out, 0);
        AppendElement(out, *root, 0, false);
    }
    return WithoutCarriageReturns(out);
}

}  // namespace varno_zpk
