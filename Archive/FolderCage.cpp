// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/FolderCage.h"

#include <unistd.h>

#include <cstdint>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

namespace {

// The kernel's interface, which is newer than the headers of the systems that this is built on. The calls
// have these numbers on every processor.
constexpr long kCreateRuleset = 444;
constexpr long kAddRule = 445;
constexpr long kRestrictSelf = 446;
constexpr unsigned kAskForVersion = 1;
constexpr int kPathBeneath = 1;

struct Ruleset {
    std::uint64_t fileAccess;
    std::uint64_t networkAccess;
    std::uint64_t scopes;
};

struct [[gnu::packed]] PathBeneath {
    std::uint64_t allowedAccess;
    std::int32_t folder;
};

constexpr std::uint64_t bit(unsigned number) {
    return std::uint64_t{1} << number;
}

constexpr std::uint64_t kWriteFile = bit(1);
constexpr std::uint64_t kReadFile = bit(2);
constexpr std::uint64_t kReadFolder = bit(3);
constexpr std::uint64_t kRemoveFolder = bit(4);
constexpr std::uint64_t kRemoveFile = bit(5);
constexpr std::uint64_t kMakeFolder = bit(7);
constexpr std::uint64_t kMakeFile = bit(8);
constexpr std::uint64_t kMakeLink = bit(12);
constexpr std::uint64_t kReferTo = bit(13);
constexpr std::uint64_t kTruncate = bit(14);

constexpr std::uint64_t kAllowed = kWriteFile | kReadFile | kReadFolder | kRemoveFolder | kRemoveFile |
                                   kMakeFolder | kMakeFile | kMakeLink | kReferTo | kTruncate;

/// The first one that can allow a hard link from one folder to another; those before forbid it always.
constexpr long kFirstVersion = 2;

/// All that a version knows, so that it forbids what is not allowed.
Ruleset allOf(long version) {
    constexpr std::uint64_t kFirst = bit(14) - 1;
    Ruleset ruleset{kFirst, 0, 0};
    if (version >= 3) {
        ruleset.fileAccess |= kTruncate;
    }
    if (version >= 4) {
        ruleset.networkAccess = bit(0) | bit(1);
    }
    if (version >= 5) {
        ruleset.fileAccess |= bit(15);
    }
    if (version >= 6) {
        ruleset.scopes = bit(0) | bit(1);
    }
    return ruleset;
}

}  // namespace

bool FolderCage::enter(int folder) {
    const long version = ::syscall(kCreateRuleset, nullptr, 0, kAskForVersion);
    if (version < kFirstVersion) {
        return false;
    }
    const Ruleset ruleset = allOf(version);
    const ZPKFileDescriptor rules(static_cast<int>(::syscall(kCreateRuleset, &ruleset, sizeof(ruleset), 0)));
    const PathBeneath below{kAllowed & ruleset.fileAccess, folder};
    return rules.isOpen() && ::syscall(kAddRule, rules.get(), kPathBeneath, &below, 0) == 0 &&
           ::syscall(kRestrictSelf, rules.get(), 0) == 0;
}

}  // namespace zpk_archive
