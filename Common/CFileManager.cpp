// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CFileManager.h"

#include <cassert>
#include <cstddef>

#include "Common/CFileManagerLow.h"

namespace varno_zpk {

CFileManager* CFileManager::s_Manager = nullptr;

// The reports of these assertions are fixed texts, which the formatter would change.
// clang-format off
CFileManager::CFileManager() {
    assert(s_Manager==NULL); // NOLINT(modernize-use-nullptr)
}

CFileManager::~CFileManager() {
    assert(s_Manager==this);
    s_Manager = nullptr;
}
// clang-format on

CFileManager* CFileManager::GetManager() {
    if (s_Manager == nullptr) {
        s_Manager = new CFileManager;
    }
    return s_Manager;
}

bool CFileManager::GetPublicDocumentFolderPath(std::string& outPath) {
    return CFileManagerLow::GetPublicDocumentFolderPath(outPath);
}

void CFileManager::ConvertRelToAbsPath(const char* path, std::string& outPath) {
    CFileManagerLow::ConvertRelToAbsPath(path, outPath);
}

void CFileManager::GetFolderContents(const char* folder, std::vector<std::string>& outNames) {
    outNames.clear();
    CFileManagerLow::GetFolderContents(folder, outNames);
}

bool CFileManager::IsFolder(const char* path) {
    return CFileManagerLow::IsFolder(path);
}

}  // namespace varno_zpk
