// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLSerializer.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "Common/CXMLElement.h"

namespace varno_zpk {

namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr std::size_t kBlanksPerLevel = 4;

std::string_view textReference(char character) {
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

std::string_view valueReference(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '"':
            return "&quot;";
        case '\t':
            return "&#x9;";
        case '\n':
            return "&#xA;";
        default:
            return {};
    }
}

void appendEscaped(std::string& out, const std::string& text, std::string_view (*referenceOf)(char)) {
    for (const char character : text) {
        const std::string_view reference = referenceOf(character);
        if (reference.empty()) {
            out += character;
        } else {
            out += reference;
        }
    }
}

std::string withoutCarriageReturns(const std::string& text) {
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

bool hasTextChild(const CXMLElement& element) {
    return element.GetFirstChildText() != nullptr;
}

bool hasElementChild(const CXMLElement& element) {
    return std::any_of(element.GetChildren().begin(), element.GetChildren().end(),
                       [](const CXMLNode* child) { return child->GetKind() == XMLKIND_ELEMENT; });
}

/// A reader takes a text of nothing but white space beside an element for indentation, and drops it,
/// unless there is a reference in it.
void appendText(std::string& out, const std::string& text, const CXMLElement& parent) {
    const bool isBlank = !text.empty() && text.find_first_not_of(" \t\n") == std::string::npos;
    if (isBlank && hasElementChild(parent)) {
        out += text.front() == ' ' ? "&#x20;" : valueReference(text.front());
        out.append(text, 1);
    } else {
        appendEscaped(out, text, textReference);
    }
}

void startLine(std::string& out, std::size_t level) {
    out += '\n';
    out.append(level * kBlanksPerLevel, ' ');
}

void appendAttributes(std::string& out, const CXMLElement& element) {
    for (const CXMLNode* attribute : element.GetAttributes()) {
        out += ' ';
        out += attribute->GetNameString();
        out += "=\"";
        appendEscaped(out, attribute->GetStringValueString(), valueReference);
        out += '"';
    }
}

void appendElement(std::string& out, const CXMLElement& element, std::size_t level, bool isInline);

/// Kinds other than elements and text leave no trace.
void appendChildren(std::string& out, const CXMLElement& element, std::size_t level, bool isInline) {
    for (const CXMLNode* child : element.GetChildren()) {
        if (child->GetKind() == XMLKIND_TEXT) {
            appendText(out, child->GetStringValueString(), element);
        } else if (child->GetKind() == XMLKIND_ELEMENT) {
            if (!isInline) {
                startLine(out, level);
            }
            appendElement(out, static_cast<const CXMLElement&>(*child), level, isInline);
        }
    }
}

void appendElement(std::string& out, const CXMLElement& element, std::size_t level, bool isInline) {
    out += '<';
    out += element.GetNameString();
    appendAttributes(out, element);
    const bool areChildrenInline = isInline || hasTextChild(element);
    const std::size_t startOfChildren = out.size();
    out += '>';
    appendChildren(out, element, level + 1, areChildrenInline);
    if (out.size() == startOfChildren + 1) {
        out.back() = '/';
        out += '>';
        return;
    }
    if (!areChildrenInline) {
        startLine(out, level);
    }
    out += "</";
    out += element.GetNameString();
    out += '>';
}

}  // namespace

std::string CXMLSerializer::Serialize(const CXMLDocument& document) {
    std::string out(kDeclaration);
    if (const CXMLElement* root = document.GetRootElement()) {
        startLine(out, 0);
        appendElement(out, *root, 0, false);
    }
    return withoutCarriageReturns(out);
}

}  // namespace varno_zpk
