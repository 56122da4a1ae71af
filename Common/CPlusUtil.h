// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdio>
#include <type_traits>
#include <typeinfo>

namespace varno_zpk {

/// Place of the last checked down-cast, for a debugger or a crash report.
extern const char* g_CPlusUtil_File;
extern unsigned int g_CPlusUtil_Line;

/// Takes a pointer back to its real class. A pointer to an object of another class is reported on
/// standard error and cast all the same: the report is a warning, not a stop. Used through
/// `DOWN_CAST`, which names the place.
// The wrong cast is intended, so the undefined behaviour sanitizer must not stop the program at it.
template <typename Target, typename Source>
__attribute__((no_sanitize("vptr"))) Target CheckedDownCast(Source* source, const char* file,
                                                            unsigned int line) {
    static_assert(std::is_pointer_v<Target>, "a down-cast gives a pointer");
    g_CPlusUtil_File = file;
    g_CPlusUtil_Line = line;
    // An object of exactly the class, the usual case, is told by its type alone: a lookup in a table
    // casts at every step, and the full cast takes several times as long as comparing the keys.
    if (source != nullptr && typeid(*source) != typeid(std::remove_pointer_t<Target>) &&
        dynamic_cast<Target>(source) != source) {
        std::fprintf(stderr, "%s:%u: down_cast error.'%s'->'%s'\n", file, line, typeid(Source*).name(),
                     typeid(Target).name());
    }
    return static_cast<Target>(source);
}

/// `fopen` in the shape of the bounds-checked interface: stores the handle (null on failure) and
/// gives 0, or the system's error number.
int fopen_s(std::FILE** file, const char* path, const char* mode);

}  // namespace varno_zpk

#define DOWN_CAST(Target, source) (::varno_zpk::CheckedDownCast<Target>((source), __FILE__, __LINE__))
