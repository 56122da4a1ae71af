// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <expat.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Common/CXMLDocument.h"
#include "Common/CXMLElement.h"

namespace varno_zpk {

/// Builds the tree of one document while Expat reads it.
///
/// Contiguous character data becomes one text node; a comment or a processing instruction splits it.
/// Text of nothing but literal white space is dropped beside child elements and kept where the element
/// holds no element; white space that is written as a reference is text like any other. Comments, processing
/// instructions, the document type and namespace declarations leave nothing in the tree; names keep their
/// prefix. External entities are never read.
class CExpatTreeBuilder {
public:
    /// Deeper documents count as malformed: everything that walks a tree, its destruction included,
    /// does so recursively.
    static constexpr std::size_t kMaximumDepth = 1000;

    /// A document that declares more entities counts as malformed: Expat releases of before 2024
    /// expand an entity that names another one recursively, so a long chain would use up the stack.
    static constexpr std::size_t kMaximumEntities = 1000;

    /// `encoding` overrides what the input says about itself unless it is null. `inputSize`, in
    /// bytes, sets how large a tree the input may make.
    CExpatTreeBuilder(const char* encoding, std::size_t inputSize);
    CExpatTreeBuilder(const CExpatTreeBuilder&) = delete;
    CExpatTreeBuilder& operator=(const CExpatTreeBuilder&) = delete;

    /// Room for the next piece of input; null when there is no memory for it.
    void* GetBuffer(int size);
    /// Takes in what was put into the buffer. False when the input is malformed. Memory exhaustion
    /// passes through as an exception.
    bool ParseBuffer(int size, bool isLast);
    /// As `ParseBuffer`, for input that lies elsewhere.
    bool Parse(const char* input, int size, bool isLast);

    /// Where something stands in the input.
    struct Place {
        /// From 1 on.
        std::size_t line;
        /// In characters, from 1 on.
        std::size_t column;
        /// In bytes, from 0 on; inside an entity's text that of the reference.
        std::size_t offset;
    };

    /// Why input is malformed, in Expat's words or those of this class.
    struct Refusal {
        std::string reason;
        Place place;
        /// Its encoding is not known, or not the one that it claims to be.
        bool isOfEncoding;
    };

    /// Only after a piece was refused.
    Refusal GetRefusal() const;

    /// The encoding that the input claims to be in, where it was refused because Expat does not read that by
    /// itself; else empty. Its text in UTF-8 goes to another builder.
    const std::string& GetForeignEncoding() const { return m_foreignEncoding; }

    /// Has `listener` called with each element when its start tag has been read; the element stays where it
    /// is as long as the tree does.
    using ElementListener = std::function<void(const CXMLElement& element, const Place& place)>;
    void SetElementListener(ElementListener listener) { m_listener = std::move(listener); }

    /// The finished tree, after the last piece was taken in.
    std::unique_ptr<CXMLDocument> TakeDocument();

private:
    struct OpenElement {
        CXMLElement* element;
        bool hasElementChild;
    };

    /// A text node to be.
    struct PendingText {
        std::string value;
        /// Nothing but literal white space so far.
        bool isIndentation = true;
    };

    static void XMLCALL HandleStartElement(void* builder, const char* name, const char** attributes);
    static void XMLCALL HandleEndElement(void* builder, const char* name);
    static void XMLCALL HandleCharacterData(void* builder, const char* text, int length);
    static void XMLCALL HandleComment(void* builder, const char* text);
    static void XMLCALL HandleProcessingInstruction(void* builder, const char* target, const char* text);
    static void XMLCALL HandleMarkup(void* builder, const char* markup, int length);
    static int XMLCALL HandleUnknownEncoding(void* builder, const char* name, XML_Encoding* outEncoding);
    static void XMLCALL HandleEntityDeclaration(void* builder, const char* name, int isParameterEntity,
                                                const char* value, int valueLength, const char* base,
                                                const char* systemIdentifier, const char* publicIdentifier,
                                                const char* notation);

    template <typename Action>
    void Guard(Action action) noexcept;
    bool Finish(XML_Status status);
    Place GetPlace() const;

    void CountEntity();
    void StartElement(const char* name, const char** attributes);
    void EndElement();
    void AddCharacterData(const char* text, std::size_t length);
    bool IsReference();
    std::unique_ptr<CXMLElement> CreateElement(const char* name, const char** attributes);
    void AddTexts(bool dropIndentation);
    void Charge(std::size_t bytes);

    std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> m_parser;
    std::size_t m_budget;
    std::size_t m_entities = 0;
    std::unique_ptr<CXMLElement> m_root;
    std::vector<OpenElement> m_openElements;
    /// Since the last tag.
    std::vector<PendingText> m_texts;
    bool m_lastTextIsOpen = false;
    /// The first character of the markup that Expat was asked for, or zero before it answers.
    char m_startOfMarkup = '\0';
    ElementListener m_listener;
    std::string m_foreignEncoding;
    bool m_isStopped = false;
    /// Why input was refused that Expat would have taken; else null.
    const char* m_refusal = nullptr;
    Place m_refusalPlace{};
    /// What a handler threw: it must not pass through Expat, which is C.
    std::exception_ptr m_exception;
};

}  // namespace varno_zpk
