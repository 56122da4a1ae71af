// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <condition_variable>
#include <mutex>

// Clang checks these annotations; other compilers pass over them.
#if defined(__clang__)
#define ZPK_THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define ZPK_THREAD_ANNOTATION(attribute)
#endif

/// Stands behind a field that may be touched only while the mutex is held.
#define ZPK_GUARDED_BY(mutex) ZPK_THREAD_ANNOTATION(guarded_by(mutex))

/// Stands behind a private operation whose caller holds the mutex.
#define ZPK_REQUIRES(mutex) ZPK_THREAD_ANNOTATION(requires_capability(mutex))

/// Stands behind an operation that takes the mutex itself, so that its caller must not hold it.
#define ZPK_EXCLUDES(mutex) ZPK_THREAD_ANNOTATION(locks_excluded(mutex))

/// A mutex that the thread-safety check knows.
class ZPK_THREAD_ANNOTATION(capability("mutex")) ZPKMutex {
public:
    void lock() ZPK_THREAD_ANNOTATION(acquire_capability()) { m_mutex.lock(); }
    void unlock() ZPK_THREAD_ANNOTATION(release_capability()) { m_mutex.unlock(); }

private:
    friend class ZPKMutexLock;
    std::mutex m_mutex;
};

/// Holds a mutex for a stretch of code.
class ZPK_THREAD_ANNOTATION(scoped_lockable) ZPKMutexLock {
public:
    explicit ZPKMutexLock(ZPKMutex& mutex) ZPK_THREAD_ANNOTATION(acquire_capability(mutex))
        : m_lock(mutex.m_mutex) {}
    ~ZPKMutexLock() ZPK_THREAD_ANNOTATION(release_capability()) = default;
    ZPKMutexLock(const ZPKMutexLock&) = delete;
    ZPKMutexLock& operator=(const ZPKMutexLock&) = delete;

    /// Lets the mutex go until `condition` is notified; it is held again on return. To be called in a
    /// loop that asks what is waited for, since a wait may end for nothing.
    void wait(std::condition_variable& condition) { condition.wait(m_lock); }

private:
    std::unique_lock<std::mutex> m_lock;
};
