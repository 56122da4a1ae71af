/* SPDX-FileCopyrightText: 2026 The Zephyrkit authors
 * SPDX-License-Identifier: MIT
 *
 * The data library of ICU without data: an archive, in the form that ICU documents for its common data
 * files, that lists no item. The real one is the largest of all carried files, and the toolkit uses ICU
 * for conversions and the case of letters, which need none of it; what finds no data says so and goes on.
 * ENTRY is the name that this version of ICU looks for.
 */
#include <stdint.h>

struct archive {
    uint16_t header_size;
    uint8_t magic[2];
    uint16_t info_size;
    uint16_t reserved;
    uint8_t is_big_endian;
    uint8_t character_set;
    uint8_t size_of_character;
    uint8_t reserved_byte;
    uint8_t data_format[4];
    uint8_t format_version[4];
    uint8_t data_version[4];
    uint8_t padding[8];
    uint32_t items;
    uint32_t padding_of_table[3];
};

/* ICU reads the header's numbers in the byte order of the machine, which is the only one here. */
_Static_assert(sizeof(struct archive) == 48, "the header takes 32 bytes and has no gaps");

__attribute__((visibility("default"), aligned(16))) const struct archive ENTRY = {
    .header_size = 32,
    .magic = {0xda, 0x27},
    .info_size = 20,
    .size_of_character = 2,
    .data_format = {'C', 'm', 'n', 'D'},
    .format_version = {1, 0, 0, 0},
};
