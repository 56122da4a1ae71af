// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Stands for parts of the C library that this program never comes to, and that its other parts name all the
// same: catalogues of translated messages, name services, the printing of fractions. Without this they would
// be a sixth of the program, which is expanded at every start. The linker takes what is here in their place;
// should a library come to need more of a part than stands here, linking fails with two definitions of one
// name.

#include <sys/uio.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace {

iovec piece(std::string_view text) {
    return {const_cast<char*>(text.data()), text.size()};
}

}  // namespace

// The names are the library's, and so are their types.
// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp)
extern "C" {

/// What a thread knows of name services, of which this program asks none.
constinit thread_local void* __libc_resp = nullptr;

char* gettext(const char* message) {
    return const_cast<char*>(message);
}

char* dcgettext(const char*, const char* message, int) {
    return const_cast<char*>(message);
}

char* __dcgettext(const char*, const char* message, int) {
    return const_cast<char*>(message);
}

// Nothing prints a number that is no whole one. Whoever did would be told of a failure.
int __printf_fp(void*, const void*, const void*) {
    return -1;
}

int __printf_fp_l(void*, void*, const void*, const void*) {
    return -1;
}

int __printf_fphex(void*, const void*, const void*) {
    return -1;
}

/// The library's own would take the streams along, which this program has no use for.
[[noreturn]] void __assert_fail(const char* condition, const char* file, unsigned line,
                                const char* function) {
    char digits[16];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), line).ptr;
    const iovec pieces[] = {piece("zephyrkit-run: "),
                            piece(file),
                            piece(":"),
                            piece({std::begin(digits), static_cast<std::size_t>(end - std::begin(digits))}),
                            piece(": "),
                            piece(function),
                            piece(": Assertion `"),
                            piece(condition),
                            piece("' failed.\n")};
    static_cast<void>(::writev(STDERR_FILENO, std::begin(pieces), std::size(pieces)) > 0);
    std::abort();
}
}
// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp)
