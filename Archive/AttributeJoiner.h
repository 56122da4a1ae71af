// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Archive/AppleDouble.h"
#include "Archive/MemberPath.h"

namespace zpk_archive {

class ErrorSink;
class FolderWriter;

/// Brings the attributes in AppleDouble files to the files that they belong to, in whatever order the two
/// come. What is kept of the members is bounded: of the paths that came before it knows a million, and of
/// AppleDouble files that wait for their files two MiB of paths. Beyond that AppleDouble files stay files,
/// with a warning.
class AttributeJoiner {
public:
    AttributeJoiner(FolderWriter& writer, ErrorSink& sink) : m_writer(writer), m_sink(sink) {}

    static bool isCompanionName(const char* leaf);

    /// Takes the attributes of an AppleDouble file at once, where its file came directly before; false where
    /// the AppleDouble file has to be made.
    bool takeAtOnce(const MemberPath& companion, const AttributeMap& attributes);

    /// An AppleDouble file has been made; its attributes are tried later unless they were in vain already.
    void companionMade(const MemberPath& companion, bool mayJoinLater);
    /// A file or folder has been made. Throws MemberFailure.
    void thingMade(const MemberPath& path);
    /// What `thingMade` was told of has not been made after all. Only while nothing waits for its file.
    void thingFailed(const MemberPath& path);
    /// Whether an AppleDouble file came directly before, so that the next thing must be there when it is told
    /// of.
    bool awaitsNext() const { return m_lastIsWaiting; }
    /// Something else has been made.
    void otherMade(const MemberPath& path);

    /// Joins what has waited for the last member.
    void finish();

private:
    void remember(const MemberPath& path);
    bool isMade(const MemberPath& path) const;
    void keep(const MemberPath& companion, const char* reason);
    bool apply(const MemberPath& companion, const AttributeMap& attributes);
    void joinKnown(const MemberPath& companion);
    void join(const MemberPath& companion);

    FolderWriter& m_writer;
    ErrorSink& m_sink;
    MemberPath m_last;
    std::vector<std::size_t> m_made;     ///< Hashes of paths, each as often as it was made.
    std::vector<std::size_t> m_failed;   ///< Those of them that were not made after all.
    bool m_hasForgotten = false;         ///< More were made than are known.
    std::vector<std::string> m_waiting;  ///< Paths as texts.
    std::size_t m_waitingSize = 0;
    bool m_lastIsWaiting = false;  ///< The last of them came directly before the member at hand.
};

}  // namespace zpk_archive
