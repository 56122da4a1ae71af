// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/WorkFolder.h"

#include <sys/stat.h>

#include "Base/ZPKPath.h"
#include "Base/ZPKReplacementFile.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKPrivateFolder.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr unsigned int kMaximumAttempts = 1000;

bool isTaken(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0;
}

}  // namespace

WorkFolder WorkFolder::beside(const std::string& outputPath) {
    for (unsigned int attempt = 0;; ++attempt) {
        const std::string path = ZPKReplacementFile::temporaryPathBeside(outputPath, attempt);
        const ZPKOutcome made = ZPKPrivateFolder::makeNew(path);
        if (made) {
            return WorkFolder(path);
        }
        // An earlier process of this number, killed outright, may have left one of the names taken.
        if (!isTaken(path) || attempt == kMaximumAttempts) {
            throw PackagerFailure("cannot make a folder in " + ZPKPath::parent(outputPath),
                                  made.failure().reason());
        }
    }
}

WorkFolder::~WorkFolder() {
    ZPKFileManager::removeItem(m_path).ignore();
}

}  // namespace zpk_packager
