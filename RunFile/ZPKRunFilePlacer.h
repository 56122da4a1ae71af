// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKMutex.h"
#include "RunFile/ZPKRunFile.h"

/// Places what a run file holds in a folder, on all processors: small files out of their compressed
/// blocks, large ones as they are, shared with the run file where the file system can. Used once.
class ZPKRunFilePlacer {
public:
    /// `runFile` outlives the placer.
    explicit ZPKRunFilePlacer(const ZPKRunFile& runFile) : m_runFile(runFile) {}

    /// `folder` is there, empty, and nobody else may write to it. After a failure some of it may be
    /// placed. Fails with the first cause that any worker met, damage of the file among them.
    ZPKOutcome placeIn(const std::string& folder);

private:
    struct StoredPiece {
        std::size_t entry;
        std::size_t segment;
    };

    ZPKOutcome makeFoldersAndFiles();
    ZPKOutcome makeLinks();
    ZPKOutcome workOnAllProcessors();
    void work() noexcept;
    ZPKOutcome placeBlock(std::size_t index);
    ZPKOutcome writeFilesOfBlock(std::size_t index, std::string_view plain);
    /// `buffer` is the worker's own, for all that it places.
    ZPKOutcome placePiece(const StoredPiece& piece, std::string& buffer);
    ZPKFailure failureAt(const ZPKRunFileEntry& entry, int error) const;
    void keepFailure(const ZPKFailure& failure);

    const ZPKRunFile& m_runFile;
    std::string m_folderPath;
    ZPKFileDescriptor m_folder;
    /// The entries of each block, and the pieces of the stored files: what the workers take in turn.
    std::vector<std::vector<std::size_t>> m_entriesOfBlock;
    std::vector<StoredPiece> m_pieces;
    std::atomic<std::size_t> m_next = 0;
    std::atomic<bool> m_hasFailed = false;
    ZPKMutex m_mutex;
    std::vector<ZPKFailure> m_failures ZPK_GUARDED_BY(m_mutex);
};
