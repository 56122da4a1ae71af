// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "Common/CExpatTreeBuilder.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Looks at the drawing (SVG) of a package, of which a picture will be made; it is not drawn here.
class DrawingCheck {
public:
    DrawingCheck(std::string path, FindingList& findings) : m_path(std::move(path)), m_findings(findings) {}

    void run(const std::string& bytes);

private:
    using Place = varno_zpk::CExpatTreeBuilder::Place;

    void visit(const varno_zpk::CXMLElement& element, const Place& place);
    void visitRoot(const varno_zpk::CXMLElement& element, const Place& place);
    void visitReference(const std::string& name, const std::string& target, const Place& place);
    void reportOnce(const char* check, const std::string& name, const std::string& text, const Place& place);
    void report(const char* check, const std::string& text, const Place& place);

    std::string m_path;
    FindingList& m_findings;
    std::size_t m_elements = 0;
    std::set<std::string> m_reported;
};

}  // namespace zpk_packager
