// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKProgramFilter.h"

#include <emmintrin.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

/// Nothing before this is touched, so that both directions see whether it is a program.
constexpr std::size_t kHeaderSize = 64;
constexpr std::size_t kFieldSize = 4;

/// Distances beyond this are no distances in a program but other bytes. Larger than any program.
constexpr std::uint32_t kReach = std::uint32_t{1} << 25;

bool isProgram(const unsigned char* bytes, std::size_t size) {
    return size > kHeaderSize && std::memcmp(bytes,
                                             "\x7f"
                                             "ELF",
                                             4) == 0;
}

/// What the last byte of an instruction before its distance says of it.
enum class Ending : std::uint8_t {
    None,
    /// call, jmp
    Alone,
    /// A conditional jmp, when 0F comes before.
    AfterEscape,
    /// An operand at a distance, when one of the usual instructions comes before.
    Operand,
};

constexpr std::array<Ending, 256> kEndings = [] {
    std::array<Ending, 256> endings{};
    endings[0xE8] = endings[0xE9] = Ending::Alone;
    for (std::size_t index = 0; index < 16; ++index) {
        endings[0x80 + index] = Ending::AfterEscape;
    }
    for (std::size_t index = 0; index < 8; ++index) {
        endings[0x05 + 8 * index] = Ending::Operand;
    }
    return endings;
}();

bool takesOperand(unsigned char first) {
    // lea, mov, cmp, and call or jmp through a table
    return first == 0x8D || first == 0x8B || first == 0x89 || first == 0x39 || first == 0x3B || first == 0xFF;
}

/// Whether the bytes before `next` end an instruction that goes on with a distance of four bytes. Looks at
/// no byte before `free`: those may be a distance, which looks another way when it comes to the way back.
bool endsBeforeDistance(const unsigned char* free, const unsigned char* next) {
    const Ending ending = kEndings[next[-1]];
    if (ending == Ending::None || ending == Ending::Alone || next - free < 2) {
        return ending == Ending::Alone;
    }
    return ending == Ending::AfterEscape ? next[-2] == 0x0F : takesOperand(next[-2]);
}

/// How many bytes are looked at together.
constexpr std::ptrdiff_t kStep = sizeof(__m128i);

__m128i equal(__m128i bytes, unsigned char mask, unsigned char value) {
    const __m128i masked = _mm_and_si128(bytes, _mm_set1_epi8(static_cast<char>(mask)));
    return _mm_cmpeq_epi8(masked, _mm_set1_epi8(static_cast<char>(value)));
}

/// Which of the bytes from `bytes` on may end an instruction before its distance, the first one by the lowest
/// bit: all that do, and a few others. Takes a byte before them as it is.
unsigned possibleEndings(const unsigned char* bytes) {
    const __m128i last = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes - 1));
    const __m128i alone = equal(last, 0xFE, 0xE8);
    const __m128i conditional = _mm_and_si128(equal(last, 0xF0, 0x80), equal(first, 0xFF, 0x0F));
    const __m128i usual = _mm_or_si128(_mm_or_si128(equal(first, 0xF9, 0x89), equal(first, 0xFD, 0x39)),
                                       equal(first, 0xFF, 0xFF));
    const __m128i operand = _mm_and_si128(equal(last, 0xC7, 0x05), usual);
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(alone, conditional), operand)));
}

std::uint32_t fieldAt(const unsigned char* place) {
    std::uint32_t value = 0;
    std::memcpy(&value, place, kFieldSize);
    return value;
}

/// `Change` gives the new value of a field whose distance counts from `position`, both modulo 2^26.
template <typename Change>
void changeField(unsigned char* field, std::uint32_t position, Change change) {
    const std::uint32_t value = fieldAt(field);
    // Within the reach as a signed number. What lies beyond stays, and nothing in it is looked at either.
    if (value + kReach < 2 * kReach) {
        const std::uint32_t place = change(value, position);
        const std::uint32_t changed = ((place + kReach) & (2 * kReach - 1)) - kReach;
        std::memcpy(field, &changed, kFieldSize);
    }
}

template <typename Change>
void changeFields(char* text, std::size_t size, Change change) {
    auto* const bytes = reinterpret_cast<unsigned char*>(text);
    if (!isProgram(bytes, size)) {
        return;
    }
    const unsigned char* free = bytes + kHeaderSize;
    const unsigned char* const end = bytes + size;
    const unsigned char* const last = end - kFieldSize;
    for (unsigned char* step = bytes + kHeaderSize; step < last; step += kStep) {
        unsigned endings = end - step >= kStep ? possibleEndings(step) : (1U << kStep) - 1;
        for (; endings != 0; endings &= endings - 1) {
            unsigned char* const next = step + std::countr_zero(endings) + 1;
            if (next > free && next <= last && endsBeforeDistance(free, next)) {
                changeField(next, static_cast<std::uint32_t>(next - bytes), change);
                free = next + kFieldSize;
            }
        }
    }
}

}  // namespace

void ZPKProgramFilter::pack(char* bytes, std::size_t size) {
    changeFields(bytes, size, [](std::uint32_t field, std::uint32_t position) { return field + position; });
}

void ZPKProgramFilter::unpack(char* bytes, std::size_t size) {
    changeFields(bytes, size, [](std::uint32_t field, std::uint32_t position) { return field - position; });
}
