// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

namespace zpk_archive {

/// What a process gives up before it unpacks what strangers have packed, so that a mistake in reading an
/// archive harms nothing but the folder that is written: rights that a program could bring (`no_new_privs`),
/// memory beyond 512 MiB, descriptors beyond 16384, core files, every path outside the folder, and all system
/// calls that unpacking does not take.
class ExtractionCage {
public:
    ExtractionCage() = delete;

    /// What the kernel has to offer.
    struct Walls {
        bool folder = false;
        bool calls = false;
    };

    /// For the calling thread and all that it starts, for good; to be called before any is started. `folder`
    /// stays the caller's. What the kernel does not offer is left out. In a build that is instrumented
    /// nothing happens: the instruments need more.
    static Walls enter(int folder);
};

}  // namespace zpk_archive
