// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ProgramParts.h"

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKProcess.h"

namespace zpk_packager {

std::string ProgramParts::path(const std::string& name) {
    const std::string folder = ZPKPath::parent(ZPKProcess::executablePath("self").value_or("/"));
    const std::string beside = ZPKPath::join(folder, name);
    return ZPKFileManager::fileExists(beside) ? beside
                                              : ZPKPath::join(folder, ZPK_PARTS_FROM_PROGRAM "/" + name);
}

}  // namespace zpk_packager
