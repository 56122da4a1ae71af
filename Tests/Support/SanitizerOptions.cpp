// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The sanitizers' options, part of each sanitized test program, so that it finds them however it is
// started.

extern "C" {

const char* __asan_default_options() {
    return "detect_leaks=1";
}

const char* __lsan_default_options() {
    return "suppressions=" ZPK_LEAK_SUPPRESSIONS ":print_suppressions=0";
}

const char* __ubsan_default_options() {
    return "print_stacktrace=1";
}

const char* __tsan_default_options() {
    return "halt_on_error=1";
}
}
