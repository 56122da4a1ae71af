// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// What comes of memory that the kernel lacks for a moment. The library below the toolkit takes it for the end
// of its connection to the display, and the toolkit then waits for ever for its thread, which waits for that
// same connection. So every library of the process asks again, as it does anyhow after a signal or a full
// socket.

#include <dlfcn.h>
#include <poll.h>
#include <sys/uio.h>

#include <cerrno>

namespace {

using Poll = int (*)(pollfd*, nfds_t, int);
using Write = ssize_t (*)(int, const iovec*, int);

}  // namespace

extern "C" int poll(pollfd* descriptors, nfds_t count, int milliseconds) {
    static const auto kPoll = reinterpret_cast<Poll>(::dlsym(RTLD_NEXT, "poll"));
    const int ready = kPoll(descriptors, count, milliseconds);
    if (ready < 0 && errno == ENOMEM) {
        errno = EINTR;
    }
    return ready;
}

/// Only a socket lacks buffers; one that the library has is asked again when it takes something.
extern "C" ssize_t writev(int descriptor, const iovec* parts, int count) {
    static const auto kWrite = reinterpret_cast<Write>(::dlsym(RTLD_NEXT, "writev"));
    ssize_t written = -1;
    do {
        written = kWrite(descriptor, parts, count);
    } while (written < 0 && errno == EINTR);
    if (written < 0 && errno == ENOBUFS) {
        errno = EAGAIN;
    }
    return written;
}
