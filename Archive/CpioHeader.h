// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace zpk_archive {

/// The header that stands before each member of a CPIO archive, in any of its five forms.
struct CpioHeader {
    enum class Form { PortableAscii, NewAscii, NewAsciiWithChecksum, BinaryLittleEndian, BinaryBigEndian };

    /// So many bytes tell the form.
    static constexpr std::size_t kMagicSize = 6;
    static constexpr std::size_t kLargestSize = 110;

    /// The form that begins so; nothing where no header begins so.
    static std::optional<Form> formOf(std::span<const std::uint8_t> bytes);
    /// Length in bytes of a header of that form, without the name.
    static std::size_t sizeOf(Form form);
    /// Reads a whole header; nothing where a digit is none.
    static std::optional<CpioHeader> parse(Form form, std::span<const std::uint8_t> bytes);

    /// Bytes between the name and the data, and after the data.
    std::size_t namePadding() const;
    std::size_t dataPadding() const;

    bool isNewAscii() const { return form == Form::NewAscii || form == Form::NewAsciiWithChecksum; }

    Form form = Form::PortableAscii;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint32_t mode = 0;
    std::uint32_t linkCount = 0;
    std::int64_t modifiedSeconds = 0;
    std::uint32_t nameSize = 0;  ///< With the null character at its end.
    std::uint64_t dataSize = 0;
};

}  // namespace zpk_archive
