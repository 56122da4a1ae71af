// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Fuzz/MemberMutator.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

namespace {

struct Field {
    std::size_t at;
    std::size_t digits;
};

constexpr std::size_t kHeaderSize = 76;
constexpr Field kIdentity{12, 6};
constexpr Field kMode{18, 6};
constexpr Field kLinks{36, 6};
constexpr Field kNameSize{59, 6};
constexpr Field kDataSize{65, 11};

struct Piece {
    std::string header;
    std::string name;
    std::string data;

    std::string_view digitsOf(const Field& field) const {
        return std::string_view(header).substr(field.at, field.digits);
    }
    std::size_t number(const Field& field) const {
        constexpr int kOctal = 8;
        const std::string_view digits = digitsOf(field);
        std::size_t value = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), value, kOctal);
        return value;
    }
    void setNumber(const Field& field, std::size_t value) {
        char digits[32];
        std::snprintf(digits, sizeof(digits), "%0*zo", static_cast<int>(field.digits), value);
        header.replace(field.at, field.digits, digits, field.digits);
    }
};

/// The member that the text begins with, which is taken off it.
std::optional<Piece> takePiece(std::string_view& text) {
    Piece piece;
    if (text.size() < kHeaderSize || !text.starts_with("070707")) {
        return std::nullopt;
    }
    piece.header = text.substr(0, kHeaderSize);
    const std::size_t nameSize = piece.number(kNameSize);
    const std::size_t dataSize = piece.number(kDataSize);
    if (nameSize == 0 || nameSize > text.size() - kHeaderSize ||
        dataSize > text.size() - kHeaderSize - nameSize) {
        return std::nullopt;
    }
    piece.name = text.substr(kHeaderSize, nameSize - 1);
    piece.data = text.substr(kHeaderSize + nameSize, dataSize);
    text.remove_prefix(kHeaderSize + nameSize + dataSize);
    return piece;
}

std::string mutated(std::string text) {
    const std::size_t size = text.size();
    text.resize(2 * size + 16);
    text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, text.size()));
    return text;
}

class Change {
public:
    Change(std::vector<Piece>& pieces, unsigned seed) : m_pieces(pieces), m_random(seed) {}

    void make() {
        const std::size_t at = below(m_pieces.size());
        const Piece other = any();
        switch (below(8)) {
            case 0:
                m_pieces.insert(m_pieces.begin() + static_cast<std::ptrdiff_t>(at), other);
                break;
            case 1:
                m_pieces.erase(m_pieces.begin() + static_cast<std::ptrdiff_t>(at));
                break;
            case 2:
                std::swap(m_pieces[at], any());
                break;
            case 3:
                m_pieces[at].setNumber(kMode, mode());
                break;
            case 4:
                m_pieces[at].name = nameLike(other.name);
                break;
            case 5:
                m_pieces[at].setNumber(kIdentity, other.number(kIdentity));
                m_pieces[at].setNumber(kLinks, below(4));
                break;
            case 6:
                m_pieces[at].data = other.data;
                break;
            default:
                m_pieces[at].data = mutated(m_pieces[at].data);
                break;
        }
    }

private:
    std::size_t below(std::size_t limit) { return m_random() % limit; }
    Piece& any() { return m_pieces[below(m_pieces.size())]; }

    std::size_t mode() {
        constexpr std::size_t kModes[] = {0100644, 0100000, 0104755, 0040755, 0040000,
                                          0041777, 0120777, 0010644, 0020666, 0140755};
        return kModes[below(std::size(kModes))];
    }

    std::string nameLike(const std::string& name) {
        const std::size_t leaf = name.rfind('/') + 1;
        switch (below(6)) {
            case 0:
                return name;
            case 1:
                return name + "/in";
            case 2:
                return name.substr(0, leaf) + "._" + name.substr(leaf);
            case 3:
                return name.substr(0, leaf);
            case 4:
                return name + "/../" + name;
            default:
                return mutated(name);
        }
    }

    std::vector<Piece>& m_pieces;
    std::minstd_rand m_random;
};

std::string joined(std::vector<Piece>& pieces) {
    std::string text;
    for (Piece& piece : pieces) {
        piece.setNumber(kNameSize, piece.name.size() + 1);
        piece.setNumber(kDataSize, piece.data.size());
        text += piece.header + piece.name + '\0' + piece.data;
    }
    return text;
}

}  // namespace

bool zpk_fuzz::mutateMembers(std::vector<std::uint8_t>& plain, std::size_t most, unsigned seed) {
    std::string_view text(reinterpret_cast<const char*>(plain.data()), plain.size());
    std::vector<Piece> pieces;
    while (std::optional<Piece> piece = takePiece(text)) {
        pieces.push_back(*std::move(piece));
    }
    if (pieces.size() < 2) {
        return false;
    }
    Change(pieces, seed).make();
    const std::string made = joined(pieces).append(text);
    if (made.size() > most) {
        return false;
    }
    plain.assign(made.begin(), made.end());
    return true;
}
