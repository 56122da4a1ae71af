// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CZPKXMLLoader.h"

#include "Common/CXMLDocument.h"
#include "Common/CXMLParser.h"
#include "Common/CZPKError.h"
#include "Common/CZPKStatus.h"
#include "Platform/ZPKFileHandle.h"

namespace varno_zpk {

namespace {

bool isTooLarge(const std::string& path) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    return file && file->size() > CZPKXMLLoader::kLargestDescription;
}

std::unique_ptr<CLanguagesType> buildLanguages(const CXMLElement* root) {
    if (root == nullptr) {
        throw CZPKError(CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES);
    }
    return std::make_unique<CLanguagesType>(*root);
}

/// The description of the file at `path`, built by `build` from the root element; empty on failure.
/// The element tree is gone on return.
template <typename Description>
std::unique_ptr<Description> load(const std::string& path,
                                  std::unique_ptr<Description> (*build)(CXMLElement*)) {
    try {
        if (isTooLarge(path)) {
            return nullptr;
        }
        const std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithPath(path.c_str()));
        return document != nullptr ? build(document->GetRootElement()) : nullptr;
    } catch (...) {
        return nullptr;
    }
}

/// As `load`, then gives the parser back, but only after success.
template <typename Description>
Description* loadAndFinalize(const std::string& path) {
    std::unique_ptr<Description> description =
        load<Description>(path, [](CXMLElement* root) { return std::make_unique<Description>(root); });
    if (description != nullptr) {
        CXMLParser::Finalize();
    }
    return description.release();
}

}  // namespace

CUpdateInfoType* CZPKXMLLoader::LoadConditionXML(const std::string& path) {
    return loadAndFinalize<CUpdateInfoType>(path);
}

CStartupType* CZPKXMLLoader::LoadStartupXML(const std::string& path) {
    return loadAndFinalize<CStartupType>(path);
}

std::unique_ptr<const CLanguagesType> CZPKXMLLoader::LoadLanguagesXML(const std::string& path) {
    std::unique_ptr<const CLanguagesType> description =
        load<CLanguagesType>(path, [](CXMLElement* root) { return buildLanguages(root); });
    CXMLParser::Finalize();
    return description;
}

}  // namespace varno_zpk
