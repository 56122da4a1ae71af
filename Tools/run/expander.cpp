// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The beginning of a run file: makes the program of the run file, which lies compressed behind it, in memory
// and goes on in it, as the kernel would have begun it. A third of the size, for a few milliseconds.
//
// It stands alone, without the C library: nothing has been set up for one yet, and what comes is linked for
// another address (see CMakeLists.txt).

#include <elf.h>
#include <linux/mman.h>
#include <linux/signal.h>
#include <packed-program.h>
#include <sys/syscall.h>
#include <zstd.h>

#include <cstddef>
#include <cstdint>

// What is packed, between two marks, and behind everything else: a file that ends in it can still say so. The
// build makes it, and the header with its size.
asm(R"(
    .pushsection .packed, "a"
zpk_packed:
    .incbin "packed-program"
zpk_packed_end:
    .popsection
    # The oldest kernel that will do, in the form that tools ask for it: Linux 3.2.
    .pushsection .note.ABI-tag, "a", @note
    .balign 4
    .long 4, 16, 1
    .asciz "GNU"
    .long 0, 3, 2, 0
    .popsection
    .pushsection .text
    .globl _start
_start:
    xor %ebp, %ebp
    mov %rsp, %rbx
    mov %rsp, %rdi
    and $-16, %rsp
    call zpk_expand
    mov %rbx, %rsp
    xor %edx, %edx
    jmp *%rax
zpk_system_call:
    mov %rdi, %rax
    mov %rsi, %rdi
    mov %rdx, %rsi
    mov %rcx, %rdx
    mov %r8, %r10
    mov %r9, %r8
    mov 8(%rsp), %r9
    syscall
    ret
zpk_signal_return:
    mov $15, %eax
    syscall
    .popsection
)");

// Names that the assembler, the compiler and the reader of what is packed know.
// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier)
extern "C" {
extern const unsigned char zpk_packed[];
extern const unsigned char zpk_packed_end[];
long zpk_system_call(long number, long first, long second, long third, long fourth, long fifth, long sixth);
void zpk_signal_return();
void* zpk_expand(std::uintptr_t* stack);
[[noreturn]] void __assert_fail(const char* condition, const char* file, unsigned line, const char* function);

// Of the reader of what is packed; the usual header has it for those alone who do more with it.
ZSTD_DCtx* ZSTD_initStaticDCtx(void* space, std::size_t size);

// Named by it for other ways to use it, none of which is taken.
void* malloc(std::size_t) {
    return nullptr;
}

void* calloc(std::size_t, std::size_t) {
    return nullptr;
}

void free(void*) {}

// The compiler takes these to be there.
void* memcpy(void* to, const void* from, std::size_t size) {
    void* const start = to;
    asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(size) : : "memory");
    return start;
}

void* memmove(void* to, const void* from, std::size_t size) {
    if (to <= from) {
        return memcpy(to, from, size);
    }
    auto* const bytes = static_cast<unsigned char*>(to);
    for (std::size_t at = size; at > 0; --at) {
        bytes[at - 1] = static_cast<const unsigned char*>(from)[at - 1];
    }
    return to;
}

void* memset(void* to, int byte, std::size_t size) {
    void* const start = to;
    asm volatile("rep stosb" : "+D"(to), "+c"(size) : "a"(byte) : "memory");
    return start;
}
}
// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier)

// Addresses are numbers here: the kernel gives them so, and so do the headers of a program.
// NOLINTBEGIN(performance-no-int-to-ptr)

namespace {

constexpr std::uintptr_t kPage = 4096;
constexpr char kDamaged[] = "Zephyrkit: the file was cut short or changed; get it again\n";
constexpr char kNoMemory[] = "Zephyrkit: there is not enough memory\n";

long call(long number, long first, long second = 0, long third = 0, long fourth = 0, long fifth = 0,
          long sixth = 0) {
    return zpk_system_call(number, first, second, third, fourth, fifth, sixth);
}

template <typename Pointer>
long word(Pointer pointer) {
    return reinterpret_cast<long>(pointer);
}

template <std::size_t Size>
[[noreturn]] void end(const char (&message)[Size]) {
    call(SYS_write, 2, word(&message[0]), Size - 1);
    for (;;) {
        call(SYS_exit_group, 1);
    }
}

/// All of it is about to be written, so the kernel gives it at once.
void* memory(std::uintptr_t place, std::size_t size, long flags) {
    const long got = call(SYS_mmap, static_cast<long>(place), static_cast<long>(size), PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE | flags, -1, 0);
    if (got < 0 && got > -static_cast<long>(kPage)) {
        end(kNoMemory);
    }
    return reinterpret_cast<void*>(got);
}

/// What a signal does, as the kernel is told.
struct SignalAction {
    void (*handler)(int);
    unsigned long flags;
    void (*restorer)();
    unsigned long mask;
};

/// Where the file ends before its program does, reading that is a signal.
constexpr SignalAction kTellOfMissingBytes{[](int) { end(kDamaged); }, SA_RESTORER, zpk_signal_return, 0};

/// Gives what it was before: a person may ignore the signal.
SignalAction setActionOfMissingBytes(const SignalAction& action) {
    SignalAction before{};
    call(SYS_rt_sigaction, SIGBUS, word(&action), word(&before), sizeof(action.mask));
    return before;
}

/// Puts a segment to its address, with the access that it is made for.
void place(const unsigned char* program, const Elf64_Phdr& segment) {
    const std::uintptr_t start = segment.p_vaddr & ~(kPage - 1);
    const std::uintptr_t end = (segment.p_vaddr + segment.p_memsz + kPage - 1) & ~(kPage - 1);
    memory(start, end - start, MAP_FIXED);
    memcpy(reinterpret_cast<void*>(segment.p_vaddr), program + segment.p_offset, segment.p_filesz);
    const long access = ((segment.p_flags & PF_R) != 0 ? PROT_READ : 0) |
                        ((segment.p_flags & PF_W) != 0 ? PROT_WRITE : 0) |
                        ((segment.p_flags & PF_X) != 0 ? PROT_EXEC : 0);
    if (call(SYS_mprotect, static_cast<long>(start), static_cast<long>(end - start), access) != 0) {
        ::end("Zephyrkit: this system lets no program be made in memory\n");
    }
}

/// The kernel has left on the stack where the headers and the first instruction of this program are. The
/// next one looks there for its own.
void tellOfHeaders(std::uintptr_t* stack, std::uintptr_t headers, const Elf64_Ehdr& header) {
    std::uintptr_t* entry = stack + 1 + *stack + 1;
    while (*entry != 0) {
        ++entry;
    }
    for (++entry; *entry != AT_NULL; entry += 2) {
        if (*entry == AT_PHDR) {
            entry[1] = headers;
        } else if (*entry == AT_PHNUM) {
            entry[1] = header.e_phnum;
        } else if (*entry == AT_ENTRY) {
            entry[1] = header.e_entry;
        }
    }
}

/// What the reader of what is packed takes for its work; more than it asks for.
constexpr std::size_t kWorkSpace = std::size_t{128} * 1024;
alignas(64) unsigned char workSpace[kWorkSpace];

/// False when it does not come to a program of that size, whose checksum is at its end.
bool unpack(unsigned char* program, const unsigned char* packed, std::size_t size) {
    ZSTD_DCtx* const reader = ZSTD_initStaticDCtx(workSpace, kWorkSpace);
    return reader != nullptr && ZSTD_decompressDCtx(reader, program, kPlainSize, packed, size) == kPlainSize;
}

}  // namespace

/// The reader's own doubts: its input is not what was packed.
// NOLINTNEXTLINE(readability-identifier-naming, bugprone-reserved-identifier)
void __assert_fail(const char*, const char*, unsigned, const char*) {
    end(kDamaged);
}

/// Gives the first instruction of the program that was packed. `stack` is as the kernel has left it.
void* zpk_expand(std::uintptr_t* stack) {  // NOLINT(readability-identifier-naming)
    const auto size = static_cast<std::size_t>(zpk_packed_end - zpk_packed);
    const SignalAction before = setActionOfMissingBytes(kTellOfMissingBytes);
    auto* const program = static_cast<unsigned char*>(memory(0, kPlainSize, 0));
    if (!unpack(program, zpk_packed, size)) {
        end(kDamaged);
    }
    setActionOfMissingBytes(before);
    const auto& header = *reinterpret_cast<const Elf64_Ehdr*>(program);
    const auto* segments = reinterpret_cast<const Elf64_Phdr*>(program + header.e_phoff);
    for (unsigned index = 0; index < header.e_phnum; ++index) {
        if (segments[index].p_type == PT_LOAD) {
            place(program, segments[index]);
            if (segments[index].p_offset == 0) {
                tellOfHeaders(stack, segments[index].p_vaddr + header.e_phoff, header);
            }
        }
    }
    void* const entry = reinterpret_cast<void*>(header.e_entry);
    call(SYS_munmap, word(program), kPlainSize);
    return entry;
}
// NOLINTEND(performance-no-int-to-ptr)
