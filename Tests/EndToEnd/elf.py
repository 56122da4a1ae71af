# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Program files of any kind, made byte by byte; none of them runs."""

import struct

X86_64, AARCH64 = 62, 183
PT_LOAD, PT_DYNAMIC, PT_INTERP = 1, 2, 3
DT_NEEDED, DT_STRTAB, DT_STRSZ, DT_RUNPATH = 1, 5, 10, 29
HEADER, SEGMENT = 64, 56


def machine_program(machine=X86_64, interpreter=None, libraries=(), run_path=None, segments=None):
    """64 bits, little-endian; the file is placed at address 0. `segments` replaces the count of them."""
    strings = b"\0"
    entries = []
    for tag, texts in ((DT_NEEDED, libraries), (DT_RUNPATH, [run_path] if run_path else [])):
        for text in texts:
            entries.append((tag, len(strings)))
            strings += text.encode() + b"\0"
    parts = []
    if interpreter:
        parts.append((PT_INTERP, interpreter.encode() + b"\0"))
    if entries:
        parts.append((PT_DYNAMIC, b""))
    count = len(parts) + 1
    at = HEADER + SEGMENT * count
    strings_at = at
    body = strings + b"\0" * (-len(strings) % 8)
    headers = b""
    for kind, contents in parts:
        if kind == PT_DYNAMIC:
            table = [*entries, (DT_STRTAB, strings_at), (DT_STRSZ, len(strings)), (0, 0)]
            contents = b"".join(struct.pack("<qQ", *entry) for entry in table)
        place = at + len(body)
        headers += struct.pack("<IIQQQQQQ", kind, 4, place, place, place, len(contents), len(contents), 8)
        body += contents + b"\0" * (-len(contents) % 8)
    size = at + len(body)
    headers += struct.pack("<IIQQQQQQ", PT_LOAD, 5, 0, 0, 0, size, size, 4096)
    ident = b"\x7fELF\x02\x01\x01" + b"\0" * 9
    start = struct.pack("<HHIQQQIHHHHHH", 3, machine, 1, 0, HEADER, 0, 0, HEADER, SEGMENT,
                        count if segments is None else segments, 64, 0, 0)
    return ident + start + headers + body
