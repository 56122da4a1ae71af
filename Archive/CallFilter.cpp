// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CallFilter.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zpk_archive {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;
#endif

constexpr std::uint32_t kRefuse = SECCOMP_RET_ERRNO | EPERM;

/// Lets the kernel keep the filter from slowing the processor's guesses; older kernels do so by default.
constexpr unsigned kAllowSpeculation = 1U << 2;

/// The most frequent ones first.
constexpr long kFreeCalls[] = {
    __NR_openat,         __NR_pwrite64,      __NR_close,        __NR_fchmod,          __NR_utimensat,
    __NR_futex,          __NR_read,          __NR_newfstatat,   __NR_mkdirat,         __NR_unlinkat,
    __NR_linkat,         __NR_symlinkat,     __NR_ftruncate,    __NR_fchmodat,
#ifdef __NR_chmod
    __NR_chmod,
#endif
    __NR_setxattr,       __NR_write,         __NR_writev,       __NR_fstat,           __NR_brk,
    __NR_munmap,         __NR_mremap,        __NR_madvise,      __NR_set_robust_list, __NR_rseq,
    __NR_rt_sigprocmask, __NR_rt_sigaction,  __NR_rt_sigreturn, __NR_restart_syscall, __NR_sched_getaffinity,
    __NR_sched_yield,    __NR_clock_gettime, __NR_getrandom,    __NR_getpid,          __NR_gettid,
    __NR_exit,           __NR_exit_group,
};

class FilterProgram {
public:
    FilterProgram() {
        load(offsetof(seccomp_data, arch));
        unless(BPF_JEQ, kArchitecture, SECCOMP_RET_KILL_PROCESS);
        load(offsetof(seccomp_data, nr));
    }

    void allow(long call) {
        skipUnlessCall(call, 1);
        end(SECCOMP_RET_ALLOW);
    }
    void refuse(long call, int error) {
        skipUnlessCall(call, 1);
        end(SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error));
    }
    /// Allows the call where the lower half of an argument equals the value (BPF_JEQ) or shares a bit
    /// (BPF_JSET).
    void allowWhere(long call, unsigned argument, std::uint16_t test, std::uint32_t value) {
        skipUnlessCall(call, 4);
        loadArgument(argument);
        unless(test, value, kRefuse);
        end(SECCOMP_RET_ALLOW);
    }
    void allowWithoutBit(long call, unsigned argument, std::uint32_t bit) {
        skipUnlessCall(call, 4);
        loadArgument(argument);
        m_steps.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, bit, 0, 1));
        end(kRefuse);
        end(SECCOMP_RET_ALLOW);
    }
    void end(std::uint32_t verdict) { m_steps.push_back(BPF_STMT(BPF_RET | BPF_K, verdict)); }

    bool install() {
        const sock_fprog program{static_cast<unsigned short>(m_steps.size()), m_steps.data()};
        return set(kAllowSpeculation, program) || set(0, program);
    }

private:
    static bool set(unsigned flags, const sock_fprog& program) {
        return ::syscall(__NR_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program) == 0;
    }
    void load(std::size_t offset) {
        m_steps.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)));
    }
    void loadArgument(unsigned argument) {
        load(offsetof(seccomp_data, args) + argument * sizeof(std::uint64_t));
    }
    void unless(std::uint16_t test, std::uint32_t value, std::uint32_t verdict) {
        m_steps.push_back(BPF_JUMP(static_cast<std::uint16_t>(BPF_JMP | test | BPF_K), value, 1, 0));
        end(verdict);
    }
    void skipUnlessCall(long call, std::uint8_t steps) {
        m_steps.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, steps));
    }

    std::vector<sock_filter> m_steps;
};

}  // namespace

bool CallFilter::enter() {
    if (kArchitecture == 0) {
        return false;
    }
    FilterProgram filter;
    for (const long call : kFreeCalls) {
        filter.allow(call);
    }
    filter.allowWithoutBit(__NR_mmap, 2, PROT_EXEC);
    filter.allowWithoutBit(__NR_mprotect, 2, PROT_EXEC);
    filter.allowWhere(__NR_fcntl, 1, BPF_JEQ, F_DUPFD_CLOEXEC);
    filter.allowWhere(__NR_tgkill, 0, BPF_JEQ, static_cast<std::uint32_t>(::getpid()));
    // Threads, but no processes. The flags of the newer call lie in memory, where no filter sees them; the C
    // library takes the older one then.
    filter.allowWhere(__NR_clone, 0, BPF_JSET, CLONE_THREAD);
    filter.refuse(__NR_clone3, ENOSYS);
    filter.end(kRefuse);
    return filter.install();
}

}  // namespace zpk_archive
