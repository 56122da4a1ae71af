// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <expat.h>

namespace varno_zpk {

/// Lets Expat read the 8-bit encodings that it does not know by itself.
class CExpatEncoding {
public:
    CExpatEncoding() = delete;

    /// Expat's unknown-encoding handler: fills the map from the host's own tables. Refuses names
    /// that the host does not know and encodings with characters of several bytes.
    static int XMLCALL HandleUnknownEncoding(void* unused, const char* name, XML_Encoding* outEncoding);
};

}  // namespace varno_zpk
