// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace varno_zpk {

/// The file operations that talk to the host. Paths are byte strings. Nothing here says why it
/// failed.
class CFileManagerLow {
public:
    CFileManagerLow() = delete;

    /// Stores the folder that all users of the machine share: `Shared` in the users folder, whether
    /// it exists or not. Always true.
    static bool GetPublicDocumentFolderPath(std::string& outPath);

    /// Stores `path` in its standard form. A path that does not begin with "/" is taken from the
    /// working folder first.
    ///
    /// The standard form is one of the text alone, nothing is looked up: "." and "..", repeated
    /// separators and a trailing separator are taken out, a ".." takes away the component before it
    /// even where that is a link, and above the root there is the root. A "~" is a plain name: in
    /// the full path that is standardised it never leads. Where the working folder cannot be told
    /// (it was deleted), a relative path stays relative. `path` may lie in `outPath`.
    static void ConvertRelToAbsPath(const char* path, std::string& outPath);

    /// Replaces `outNames` by the names of all entries directly in `folder`, hidden ones included,
    /// in the file system's order. Empty when the folder cannot be read. `folder` must not lie in
    /// `outNames`.
    static void GetFolderContents(const char* folder, std::vector<std::string>& outNames);

    /// True when the item at `path` is a folder itself; a link to a folder is none.
    static bool IsFolder(const char* path);
};

}  // namespace varno_zpk
