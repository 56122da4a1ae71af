// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Base/ZPKReplacementFile.h"
#include "RunFile/ZPKPackedBlock.h"
#include "RunFile/ZPKRunFileTable.h"

/// Makes one executable file of a program and a bundle. Used once, on one thread.
class ZPKRunFileWriter {
public:
    /// `program` is the file that the run file begins with, `bundle` the folder that it is to hold, and
    /// `launcher` the path in it of what is started once it is placed.
    ZPKRunFileWriter(std::string program, std::string bundle, const std::string& launcher);

    /// Has `written` told how many more bytes of the bundle are in the run file, on the thread that writes.
    void setCounter(std::function<void(std::uint64_t)> written) { m_written = std::move(written); }

    /// Writes the run file to `output`, in the place of a file that is there; nothing is left there or
    /// beside it after a failure. The failure says which file and why.
    ZPKOutcome write(const std::string& output);

private:
    /// Files that are compressed together, and where they lie.
    struct Group {
        std::vector<std::size_t> entries;
        std::uint64_t size = 0;
    };

    ZPKOutcome listBundle();
    ZPKOutcome addItem(const std::string& path);
    void addToGroup(std::size_t entry);
    ZPKOutcome writeProgram();
    ZPKOutcome writeGroups();
    ZPKResult<ZPKPackedBlock> packedGroup(const Group& group) const;
    ZPKOutcome writeStoredFiles();
    ZPKOutcome storeFile(ZPKRunFileEntry& entry);
    ZPKOutcome writeTable();
    ZPKOutcome append(std::string_view bytes);
    ZPKOutcome pad();
    std::string sourcePath(const ZPKRunFileEntry& entry) const;

    const std::string m_program;
    const std::string m_bundle;
    ZPKRunFileTable m_table;
    std::vector<Group> m_groups;
    ZPKReplacementFile* m_output = nullptr;
    std::uint64_t m_size = 0;
    std::uint64_t m_programSize = 0;
    std::uint64_t m_programChecksum = 0;
    std::function<void(std::uint64_t)> m_written = [](std::uint64_t) {};
};
