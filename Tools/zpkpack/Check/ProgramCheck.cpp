// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/ProgramCheck.h"

#include <elf.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/ProgramFile.h"

namespace zpk_packager {

namespace {

#if defined(__x86_64__)
constexpr unsigned int kProcessor = EM_X86_64;
constexpr const char* kLoader = "/lib64/ld-linux-x86-64.so.2";
#elif defined(__aarch64__)
constexpr unsigned int kProcessor = EM_AARCH64;
constexpr const char* kLoader = "/lib/ld-linux-aarch64.so.1";
#elif defined(__riscv)
constexpr unsigned int kProcessor = EM_RISCV;
constexpr const char* kLoader = "/lib/ld-linux-riscv64-lp64d.so.1";
#else
#error "the loader of this processor's programs is not known"
#endif

/// What every desktop has, however small: the C library's parts and the C++ library's.
constexpr std::array<std::string_view, 13> kPlainLibraries = {
    "libc.so.6",      "libm.so.6",         "libpthread.so.0",     "libdl.so.2",        "librt.so.1",
    "libutil.so.1",   "libresolv.so.2",    "libanl.so.1",         "libnss_files.so.2", "libgcc_s.so.1",
    "libstdc++.so.6", "libthread_db.so.1", "libBrokenLocale.so.1"};

constexpr std::array<std::string_view, 5> kPlainInterpreters = {"/bin/sh", "/bin/bash", "/usr/bin/sh",
                                                                "/usr/bin/bash", "/usr/bin/env"};

template <typename List>
bool isAmong(const List& list, std::string_view name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}

const char* processorName(unsigned int processor) {
    switch (processor) {
        case EM_X86_64:
            return "x86-64";
        case EM_386:
            return "x86";
        case EM_AARCH64:
            return "AArch64";
        case EM_ARM:
            return "ARM";
        case EM_RISCV:
            return "RISC-V";
        default:
            return "another processor";
    }
}

/// The folder of the program in place of its token.
std::string folderOf(std::string folder, const std::string& program) {
    for (const std::string token : {"$ORIGIN", "${ORIGIN}"}) {
        if (folder.starts_with(token)) {
            folder.replace(0, token.size(), ZPKPath::parent(program));
        }
    }
    return folder;
}

}  // namespace

void ProgramCheck::run(const std::string& program, const std::string& dataFolder) {
    if (ZPKPath::isSameOrInside(program, dataFolder)) {
        look(program, ProgramFile::read(program),
             [](const std::string& path) { return ZPKFileManager::fileExists(path); });
    }
}

void ProgramCheck::look(const std::string& path, const ZPKResult<ProgramFile>& program,
                        const Carried& isCarried) {
    if (!program) {
        m_findings.add("unreadable", path, program.failure().reason());
        return;
    }
    switch (program->kind()) {
        case ProgramFile::Kind::Machine:
            checkMachine(path, *program, isCarried);
            break;
        case ProgramFile::Kind::Script:
            checkScript(path, *program);
            break;
        case ProgramFile::Kind::Other:
            m_findings.add("script-without-interpreter", path,
                           "the setup program is no machine code, and does not begin with #!");
            break;
    }
}

void ProgramCheck::checkMachine(const std::string& path, const ProgramFile& program,
                                const Carried& isCarried) {
    const unsigned int bits = sizeof(void*) * 8;
    if (program.processor() != kProcessor || program.bits() != bits) {
        m_findings.add("program-processor", path,
                       std::string("the setup program is for ") + processorName(program.processor()) + " (" +
                           std::to_string(program.bits()) + " bits), the launcher for " +
                           processorName(kProcessor) + " (" + std::to_string(bits) + " bits)");
        return;
    }
    if (!program.interpreter().empty() && program.interpreter() != kLoader) {
        m_findings.add("program-loader", path,
                       "the setup program asks for the loader " + program.interpreter() +
                           ", which a plain machine has not");
    }
    checkLibraries(path, program, isCarried);
}

void ProgramCheck::checkLibraries(const std::string& path, const ProgramFile& program,
                                  const Carried& isCarried) {
    const std::string loader = ZPKPath::lastComponent(kLoader);
    for (const std::string& library : program.libraries()) {
        const bool isBrought = std::any_of(
            program.libraryFolders().begin(), program.libraryFolders().end(), [&](const std::string& folder) {
                return folder.find("ORIGIN") != std::string::npos &&
                       isCarried(ZPKPath::join(folderOf(folder, path), library));
            });
        if (library != loader && !isBrought && !isAmong(kPlainLibraries, library)) {
            m_findings.add("program-library", path,
                           "the setup program needs " + library +
                               ", which a plain machine has not and Data does not bring");
        }
    }
}

void ProgramCheck::checkScript(const std::string& path, const ProgramFile& program) {
    if (program.interpreter().empty()) {
        m_findings.add("script-without-interpreter", path, "no interpreter is named behind #!");
    } else if (!isAmong(kPlainInterpreters, program.interpreter())) {
        m_findings.add(
            "program-loader", path,
            "the setup program asks for " + program.interpreter() + ", which a plain machine has not");
    }
}

}  // namespace zpk_packager
