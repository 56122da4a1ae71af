// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLNode.h"

namespace varno_zpk {

/// A tree's top: owns the root element, which does not know its document.
class CXMLDocument : public CXMLNode {
public:
    CXMLDocument() = default;
    ~CXMLDocument() override;

    /// Takes the element over; for a document just made.
    void InitWithRootElement(CXMLElement* root);
    /// Deletes the current root and takes the new one over. A node that is no element leaves the
    /// document empty and stays the caller's. The current root itself changes nothing.
    void SetRootElement(CXMLNode* root);
    /// Null when the document is empty.
    CXMLElement* GetRootElement() const { return m_rootElement; }

    CXMLNode* Clone() const override;

    /// Replaces the file at `path` as a whole. A failure goes unreported and leaves the old file.
    void WriteToFile(const char* path);
    void WriteXMLContents(std::string& outXML);

private:
    CXMLElement* m_rootElement = nullptr;
};

}  // namespace varno_zpk
