// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "Common/CAutoFinalizeObject.h"

namespace varno_zpk {

/// The process-wide door to the file system. Every operation is the one of the same name of
/// `CFileManagerLow`, where it is described. Main thread only.
class CFileManager : public CAutoFinalizeObject {
public:
    /// For `GetManager` only: asserts that there is no manager yet.
    CFileManager();
    /// Asserts that this is the manager that `GetManager` gives.
    ~CFileManager() override;

    /// The single manager, made on the first call and again on the first one after its destruction.
    static CFileManager* GetManager();

    bool GetPublicDocumentFolderPath(std::string& outPath);
    void ConvertRelToAbsPath(const char* path, std::string& outPath);
    void GetFolderContents(const char* folder, std::vector<std::string>& outNames);
    bool IsFolder(const char* path);

private:
    static CFileManager* s_Manager;
};

}  // namespace varno_zpk
