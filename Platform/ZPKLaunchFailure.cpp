// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKLaunchFailure.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>

#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKHeldFolder.h"
#include "Platform/ZPKProgramHeader.h"

namespace {

using Reason = std::optional<std::string>;

/// An interpreter may be a script itself, and so on; no kernel goes further than this.
constexpr int kDeepestHelper = 6;

/// What keeps the kernel from so much as reading the item.
Reason reasonOfItem(const std::string& path, const struct stat& attributes, int error) {
    if (S_ISDIR(attributes.st_mode)) {
        return ZPKFailure::systemReason(EISDIR);
    }
    if (!S_ISREG(attributes.st_mode)) {
        return "Not a regular file";
    }
    if (error == EACCES && ZPKFileManager::isOnFileSystemWithoutExecution(path)) {
        return "On a file system that is mounted noexec";
    }
    if (error == EACCES && !ZPKFileManager::isExecutableFile(path)) {
        return "Not executable";
    }
    return std::nullopt;
}

/// Why the kernel can do nothing with what the file holds.
Reason reasonOfContents(const ZPKProgramHeader& program) {
    switch (program.kind()) {
        case ZPKProgramHeader::Kind::Empty:
            return "The file is empty";
        case ZPKProgramHeader::Kind::Other:
            return "Neither a program nor a script that names its interpreter";
        case ZPKProgramHeader::Kind::Script:
            return program.helper().empty() ? Reason("Its first line names no interpreter") : std::nullopt;
        case ZPKProgramHeader::Kind::Machine:
            break;
    }
    return program.isForThisProcessor() ? std::nullopt
                                        : Reason("Made for another processor: " + program.processor());
}

Reason reasonOfProgram(const std::string& path, int error, int depth);

/// What is wrong with the interpreter or the loader, if anything is.
Reason reasonOfHelper(const ZPKProgramHeader& program, int error, int depth) {
    const bool isScript = program.kind() == ZPKProgramHeader::Kind::Script;
    const std::string name = (isScript ? "Its interpreter " : "Its loader ") + program.helper();
    struct stat attributes;
    if (::stat(program.helper().c_str(), &attributes) != 0) {
        return errno == ENOENT ? name + " is missing" : name + ": " + ZPKFailure::systemReason(errno);
    }
    const Reason reason = reasonOfProgram(program.helper(), error, depth);
    return reason ? Reason(name + ": " + *reason) : std::nullopt;
}

Reason reasonOfProgram(const std::string& path, int error, int depth) {
    struct stat attributes;
    if (!ZPKHeldFolder::look(path, attributes)) {
        return std::nullopt;
    }
    if (Reason reason = reasonOfItem(path, attributes, error)) {
        return reason;
    }
    const ZPKResult<ZPKProgramHeader> program = ZPKProgramHeader::ofFile(path);
    if (!program) {
        return std::nullopt;
    }
    if (error == ENOEXEC || error == ELIBBAD) {
        if (Reason reason = reasonOfContents(*program)) {
            return reason;
        }
    }
    const bool goesOn = !program->helper().empty() && depth < kDeepestHelper;
    return goesOn ? reasonOfHelper(*program, error, depth + 1) : std::nullopt;
}

/// True for an error that the items themselves may explain.
bool isOfAnItem(int error) {
    constexpr int kErrors[] = {ENOENT, ENOTDIR, ELOOP, EACCES, ENOEXEC, ELIBBAD};
    return std::find(std::begin(kErrors), std::end(kErrors), error) != std::end(kErrors);
}

}  // namespace

ZPKFailure ZPKLaunchFailure::explain(const std::string& path, int error) {
    const Reason reason = isOfAnItem(error) ? reasonOfProgram(path, error, 0) : std::nullopt;
    return {path, reason.value_or(ZPKFailure::systemReason(error))};
}
