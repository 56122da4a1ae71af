// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>

namespace zpk_run {

/// Reads one stream of LZMA without a header, made with the usual settings (lc=3, lp=0, pb=2). Needs no
/// library, not even the C one. Large: belongs in static storage, and is used once.
class LzmaReader {
public:
    /// Fills `out` with `outSize` bytes from the `inSize` bytes at `in`. False when those are no such stream.
    bool read(const unsigned char* in, std::size_t inSize, unsigned char* out, std::size_t outSize) {
        m_in = in;
        m_end = in + inSize;
        m_out = out;
        m_size = outSize;
        for (std::uint16_t& chance : m_chances) {
            chance = kEven;
        }
        m_range = 0xFFFFFFFF;
        m_isGood = true;
        for (int count = 0; count < 5; ++count) {
            m_code = m_code << 8 | nextByte();
        }
        while (m_done < m_size && m_isGood) {
            step();
        }
        return m_isGood;
    }

private:
    static constexpr unsigned kStates = 12;
    static constexpr unsigned kPositions = 4;
    static constexpr std::uint16_t kEven = 1024;
    static constexpr unsigned kChanceBits = 11;
    static constexpr unsigned kLearning = 5;
    static constexpr unsigned kLiteralBits = 3;
    static constexpr unsigned kLiteralCoder = 0x300;
    static constexpr unsigned kShortestMatch = 2;
    static constexpr unsigned kFirstDirectSlot = 14;

    /// Where the chances of each kind begin in the one array.
    static constexpr unsigned kIsMatch = 0;
    static constexpr unsigned kIsRepeat = kIsMatch + kStates * kPositions;
    static constexpr unsigned kIsOlder = kIsRepeat + kStates;
    static constexpr unsigned kIsOlderThanFirst = kIsOlder + kStates;
    static constexpr unsigned kIsOldest = kIsOlderThanFirst + kStates;
    static constexpr unsigned kIsLong = kIsOldest + kStates;
    static constexpr unsigned kSlot = kIsLong + kStates * kPositions;
    static constexpr unsigned kNearDistance = kSlot + 4 * 64;
    static constexpr unsigned kLowBits = kNearDistance + 115;
    static constexpr unsigned kMatchLength = kLowBits + 16;
    static constexpr unsigned kLengthCoder = 2 + 2 * kPositions * 8 + 256;
    static constexpr unsigned kRepeatLength = kMatchLength + kLengthCoder;
    static constexpr unsigned kLiteral = kRepeatLength + kLengthCoder;
    static constexpr unsigned kCount = kLiteral + (kLiteralCoder << kLiteralBits);

    unsigned nextByte() {
        if (m_in == m_end) {
            m_isGood = false;
            return 0;
        }
        return *m_in++;
    }

    void refill() {
        if (m_range < std::uint32_t{1} << 24) {
            m_range <<= 8;
            m_code = m_code << 8 | nextByte();
        }
    }

    /// One bit, whose chance learns from it.
    unsigned bit(unsigned index) {
        refill();
        std::uint16_t& chance = m_chances[index];
        const std::uint32_t bound = (m_range >> kChanceBits) * chance;
        if (m_code < bound) {
            m_range = bound;
            chance = static_cast<std::uint16_t>(chance + (((1U << kChanceBits) - chance) >> kLearning));
            return 0;
        }
        m_range -= bound;
        m_code -= bound;
        chance = static_cast<std::uint16_t>(chance - (chance >> kLearning));
        return 1;
    }

    /// Bits whose chances are even, the highest first.
    std::uint32_t plainBits(unsigned count) {
        std::uint32_t value = 0;
        for (; count > 0; --count) {
            refill();
            m_range >>= 1;
            const bool isOne = m_code >= m_range;
            m_code -= isOne ? m_range : 0;
            value = value << 1 | (isOne ? 1U : 0U);
        }
        return value;
    }

    unsigned tree(unsigned chances, unsigned bits) {
        unsigned node = 1;
        for (unsigned count = 0; count < bits; ++count) {
            node = node << 1 | bit(chances + node);
        }
        return node - (1U << bits);
    }

    /// The lowest bit first.
    unsigned reverseTree(unsigned chances, unsigned bits) {
        unsigned node = 1;
        unsigned value = 0;
        for (unsigned count = 0; count < bits; ++count) {
            const unsigned one = bit(chances + node);
            node = node << 1 | one;
            value |= one << count;
        }
        return value;
    }

    unsigned position() const { return static_cast<unsigned>(m_done) % kPositions; }

    /// Literals, matches and repeats leave other states behind, which tell what may come next.
    void step() {
        if (bit(kIsMatch + m_state * kPositions + position()) == 0) {
            literal();
        } else if (bit(kIsRepeat + m_state) == 0) {
            match();
        } else {
            repeat();
        }
    }

    void literal() {
        const unsigned before = m_done == 0 ? 0U : m_out[m_done - 1];
        const unsigned chances = kLiteral + kLiteralCoder * (before >> (8 - kLiteralBits));
        unsigned node = 1;
        if (m_state >= 7) {
            // After a match the byte that would have continued it is a hint at this one, until it misleads.
            if (m_distance >= m_done) {
                m_isGood = false;
                return;
            }
            unsigned hint = m_out[m_done - m_distance - 1];
            for (unsigned hinted = 0; node < 0x100; hint <<= 1) {
                hinted = hint >> 7 & 1;
                node = node << 1 | bit(chances + ((1 + hinted) << 8) + node);
                if ((node & 1) != hinted) {
                    break;
                }
            }
        }
        while (node < 0x100) {
            node = node << 1 | bit(chances + node);
        }
        m_out[m_done++] = static_cast<unsigned char>(node);
        m_state = m_state < 4 ? 0 : m_state - (m_state < 10 ? 3 : 6);
    }

    void match() {
        m_older[2] = m_older[1];
        m_older[1] = m_older[0];
        m_older[0] = m_distance;
        const unsigned count = length(kMatchLength);
        m_state = m_state < 7 ? 7 : 10;
        m_distance = distanceFor(count);
        copy(count + kShortestMatch);
    }

    void repeat() {
        if (bit(kIsOlder + m_state) != 0) {
            takeOlder(bit(kIsOlderThanFirst + m_state) == 0 ? 0 : 1 + bit(kIsOldest + m_state));
        } else if (bit(kIsLong + m_state * kPositions + position()) == 0) {
            m_state = m_state < 7 ? 9 : 11;
            copy(1);
            return;
        }
        const unsigned count = length(kRepeatLength);
        m_state = m_state < 7 ? 8 : 11;
        copy(count + kShortestMatch);
    }

    /// One of the three distances before the last one becomes the last.
    void takeOlder(unsigned which) {
        const std::size_t taken = m_older[which];
        for (; which > 0; --which) {
            m_older[which] = m_older[which - 1];
        }
        m_older[0] = m_distance;
        m_distance = taken;
    }

    unsigned length(unsigned chances) {
        constexpr unsigned kLow = 2;
        constexpr unsigned kMiddle = kLow + kPositions * 8;
        constexpr unsigned kHigh = kMiddle + kPositions * 8;
        if (bit(chances) == 0) {
            return tree(chances + kLow + position() * 8, 3);
        }
        if (bit(chances + 1) == 0) {
            return 8 + tree(chances + kMiddle + position() * 8, 3);
        }
        return 16 + tree(chances + kHigh, 8);
    }

    std::size_t distanceFor(unsigned count) {
        const unsigned slot = tree(kSlot + (count < 3 ? count : 3) * 64, 6);
        if (slot < 4) {
            return slot;
        }
        const unsigned bits = (slot >> 1) - 1;
        const std::uint32_t start = (2 | (slot & 1)) << bits;
        if (slot < kFirstDirectSlot) {
            return start + reverseTree(kNearDistance + start - slot, bits);
        }
        const std::uint32_t high = plainBits(bits - 4) << 4;
        return start + high + reverseTree(kLowBits, 4);
    }

    void copy(unsigned count) {
        if (m_distance >= m_done || count > m_size - m_done) {
            m_isGood = false;
            return;
        }
        for (; count > 0; --count, ++m_done) {
            m_out[m_done] = m_out[m_done - m_distance - 1];
        }
    }

    const unsigned char* m_in = nullptr;
    const unsigned char* m_end = nullptr;
    unsigned char* m_out = nullptr;
    std::size_t m_size = 0;
    std::size_t m_done = 0;
    std::uint32_t m_range = 0;
    std::uint32_t m_code = 0;
    unsigned m_state = 0;
    std::size_t m_distance = 0;
    std::size_t m_older[3] = {};
    bool m_isGood = false;
    std::uint16_t m_chances[kCount] = {};
};

}  // namespace zpk_run
