// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CExpatTreeBuilder.h"

#include <sys/random.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "Common/CXMLAttribute.h"
#include "Common/CXMLText.h"

namespace varno_zpk {

namespace {

/// Stops the parser: the input is well-formed so far, but is refused.
struct InputRefused {
    const char* reason;
};

// Entities and attribute defaults let a small input ask for a tree of any size. A document without
// them cannot reach this bound: its smallest node, "<a/>", costs 36 bytes per byte of input.
constexpr std::size_t kBudgetBase = std::size_t{64} << 20;
constexpr std::size_t kBudgetPerInputByte = 64;

bool isNamespaceDeclaration(std::string_view attributeName) {
    constexpr std::string_view kXmlns = "xmlns";
    return attributeName.starts_with(kXmlns) &&
           (attributeName.size() == kXmlns.size() || attributeName[kXmlns.size()] == ':');
}

bool isBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) {
        return character == ' ' || character == '\t' || character == '\r' || character == '\n';
    });
}

/// What a document's names are spread by, so that nobody can choose ones that fall together. Expat's own way
/// ends the process where the system gives no random number.
unsigned long hashSalt() {
    unsigned long salt = 0;
    if (::getrandom(&salt, sizeof(salt), GRND_NONBLOCK) != sizeof(salt)) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        salt = static_cast<unsigned long>(now) ^ reinterpret_cast<unsigned long>(&salt);
    }
    // Zero means that there is none.
    return salt | 1;
}

}  // namespace

CExpatTreeBuilder::CExpatTreeBuilder(const char* encoding, std::size_t inputSize)
    : m_parser(XML_ParserCreate(encoding), &XML_ParserFree),
      m_budget(kBudgetBase + kBudgetPerInputByte * inputSize) {
    if (m_parser == nullptr) {
        throw std::bad_alloc();
    }
    XML_SetHashSalt(m_parser.get(), hashSalt());
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), HandleStartElement, HandleEndElement);
    XML_SetCharacterDataHandler(m_parser.get(), HandleCharacterData);
    XML_SetCommentHandler(m_parser.get(), HandleComment);
    XML_SetProcessingInstructionHandler(m_parser.get(), HandleProcessingInstruction);
    // Unlike the handler without "Expand", it leaves entities to be expanded.
    XML_SetDefaultHandlerExpand(m_parser.get(), HandleMarkup);
    XML_SetEntityDeclHandler(m_parser.get(), HandleEntityDeclaration);
    XML_SetUnknownEncodingHandler(m_parser.get(), HandleUnknownEncoding, this);
}

void* CExpatTreeBuilder::GetBuffer(int size) {
    return XML_GetBuffer(m_parser.get(), size);
}

bool CExpatTreeBuilder::ParseBuffer(int size, bool isLast) {
    return Finish(XML_ParseBuffer(m_parser.get(), size, isLast));
}

bool CExpatTreeBuilder::Parse(const char* input, int size, bool isLast) {
    return Finish(XML_Parse(m_parser.get(), input, size, isLast));
}

bool CExpatTreeBuilder::Finish(XML_Status status) {
    if (m_exception != nullptr) {
        std::rethrow_exception(m_exception);
    }
    return status == XML_STATUS_OK;
}

CExpatTreeBuilder::Place CExpatTreeBuilder::GetPlace() const {
    return {static_cast<std::size_t>(XML_GetCurrentLineNumber(m_parser.get())),
            static_cast<std::size_t>(XML_GetCurrentColumnNumber(m_parser.get())) + 1,
            static_cast<std::size_t>(XML_GetCurrentByteIndex(m_parser.get()))};
}

CExpatTreeBuilder::Refusal CExpatTreeBuilder::GetRefusal() const {
    if (m_refusal != nullptr) {
        return {m_refusal, m_refusalPlace, false};
    }
    const XML_Error error = XML_GetErrorCode(m_parser.get());
    return {XML_ErrorString(error), GetPlace(),
            error == XML_ERROR_UNKNOWN_ENCODING || error == XML_ERROR_INCORRECT_ENCODING};
}

std::unique_ptr<CXMLDocument> CExpatTreeBuilder::TakeDocument() {
    std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithRootElement(m_root.get()));
    static_cast<void>(m_root.release());
    return document;
}

void CExpatTreeBuilder::HandleStartElement(void* builder, const char* name, const char** attributes) {
    auto* self = static_cast<CExpatTreeBuilder*>(builder);
    self->Guard([&] { self->StartElement(name, attributes); });
}

int CExpatTreeBuilder::HandleUnknownEncoding(void* builder, const char* name, XML_Encoding*) {
    auto* self = static_cast<CExpatTreeBuilder*>(builder);
    self->Guard([&] { self->m_foreignEncoding = name; });
    return XML_STATUS_ERROR;
}

void CExpatTreeBuilder::HandleEndElement(void* builder, const char*) {
    auto* self = static_cast<CExpatTreeBuilder*>(builder);
    self->Guard([&] { self->EndElement(); });
}

void CExpatTreeBuilder::HandleCharacterData(void* builder, const char* text, int length) {
    auto* self = static_cast<CExpatTreeBuilder*>(builder);
    self->Guard([&] { self->AddCharacterData(text, static_cast<std::size_t>(length)); });
}

void CExpatTreeBuilder::HandleComment(void* builder, const char*) {
    static_cast<CExpatTreeBuilder*>(builder)->m_lastTextIsOpen = false;
}

void CExpatTreeBuilder::HandleProcessingInstruction(void* builder, const char*, const char*) {
    static_cast<CExpatTreeBuilder*>(builder)->m_lastTextIsOpen = false;
}

void CExpatTreeBuilder::HandleMarkup(void* builder, const char* markup, int length) {
    auto* self = static_cast<CExpatTreeBuilder*>(builder);
    // Long markup comes in pieces.
    if (self->m_startOfMarkup == '\0' && length > 0) {
        self->m_startOfMarkup = *markup;
    }
}

void CExpatTreeBuilder::HandleEntityDeclaration(void* builder, const char*, int, const char*, int,
                                                const char*, const char*, const char*, const char*) {
    auto* self = static_cast<CExpatTreeBuilder*>(builder);
    self->Guard([self] { self->CountEntity(); });
}

template <typename Action>
void CExpatTreeBuilder::Guard(Action action) noexcept {
    // Expat may send the events that it has at hand even after it was told to stop.
    if (m_isStopped) {
        return;
    }
    try {
        action();
        return;
    } catch (const InputRefused& refused) {
        m_refusal = refused.reason;
        m_refusalPlace = GetPlace();
    } catch (...) {
        m_exception = std::current_exception();
    }
    m_isStopped = true;
    XML_StopParser(m_parser.get(), XML_FALSE);
}

void CExpatTreeBuilder::CountEntity() {
    if (m_entities == kMaximumEntities) {
        throw InputRefused{"it declares too many entities"};
    }
    ++m_entities;
}

void CExpatTreeBuilder::StartElement(const char* name, const char** attributes) {
    if (m_openElements.size() == kMaximumDepth) {
        throw InputRefused{"its elements are nested too deeply"};
    }
    AddTexts(true);
    std::unique_ptr<CXMLElement> element = CreateElement(name, attributes);
    if (m_listener) {
        m_listener(*element, GetPlace());
    }
    m_openElements.push_back({element.get(), false});
    if (m_openElements.size() == 1) {
        m_root = std::move(element);
        return;
    }
    OpenElement& parent = m_openElements[m_openElements.size() - 2];
    parent.hasElementChild = true;
    parent.element->AddChild(element.get());
    static_cast<void>(element.release());
}

void CExpatTreeBuilder::EndElement() {
    AddTexts(m_openElements.back().hasElementChild);
    m_openElements.pop_back();
}

void CExpatTreeBuilder::AddCharacterData(const char* text, std::size_t length) {
    Charge(length);
    if (!m_lastTextIsOpen) {
        m_texts.emplace_back();
        m_lastTextIsOpen = true;
    }
    PendingText& last = m_texts.back();
    // First of all, since Expat may use the memory of `text` for its answer.
    last.value.append(text, length);
    last.isIndentation = last.isIndentation && isBlank({text, length}) && !IsReference();
}

/// Whether the character data at hand, one character then, stands in the input as a reference. Expat
/// gives a reference by itself, apart from the data around it.
bool CExpatTreeBuilder::IsReference() {
    m_startOfMarkup = '\0';
    XML_DefaultCurrent(m_parser.get());
    return m_startOfMarkup == '&';
}

std::unique_ptr<CXMLElement> CExpatTreeBuilder::CreateElement(const char* name, const char** attributes) {
    Charge(sizeof(CXMLElement) + std::strlen(name));
    std::unique_ptr<CXMLElement> element(CXMLNode::CreateElementWithName(name));
    for (; *attributes != nullptr; attributes += 2) {
        const char* const attributeName = attributes[0];
        const char* const value = attributes[1];
        if (isNamespaceDeclaration(attributeName)) {
            continue;
        }
        Charge(sizeof(CXMLAttribute) + std::strlen(attributeName) + std::strlen(value));
        std::unique_ptr<CXMLAttribute> attribute(
            CXMLNode::CreateAttributeWithNameWithStringValue(attributeName, value));
        // Expat has refused a name that occurs twice.
        element->AddNewAttribute(std::move(attribute));
    }
    return element;
}

void CExpatTreeBuilder::AddTexts(bool dropIndentation) {
    for (const PendingText& text : m_texts) {
        if (dropIndentation && text.isIndentation) {
            continue;
        }
        Charge(sizeof(CXMLText));
        std::unique_ptr<CXMLText> node(CXMLNode::CreateTextWithStringValue(text.value.c_str()));
        m_openElements.back().element->AddChild(node.get());
        static_cast<void>(node.release());
    }
    m_texts.clear();
    m_lastTextIsOpen = false;
}

void CExpatTreeBuilder::Charge(std::size_t bytes) {
    if (bytes > m_budget) {
        throw InputRefused{"its entities make it too large"};
    }
    m_budget -= bytes;
}

}  // namespace varno_zpk
