# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Every code of every encoding that descriptions may be in, against Python's codecs, of which the tables are
made, and against the machine's iconv, which knows nothing of them."""

import os
import re
import subprocess
import unittest

DECODER = os.environ["ZPK_DECODER"]
MAKER = os.environ["ZPK_TABLE_MAKER"]

TRAILS = range(0x100)
ONE_BYTE = [bytes([byte]) for byte in range(0x100)]
TWO_BYTES = [bytes([lead, trail]) for lead in range(0x80, 0x100) for trail in TRAILS]
THREE_BYTES = [b"\x8F" + each for each in TWO_BYTES]

# Encoding, Python's codec, iconv's name.
LARGE = (
    ("Shift_JIS", "shift_jis", "SHIFT_JIS"),
    ("windows-31J", "cp932", "CP932"),
    ("EUC-JP", "euc_jp", "EUC-JP"),
    ("EUC-KR", "euc_kr", "EUC-KR"),
    ("windows-949", "cp949", "UHC"),
    ("Big5", "cp950", "CP950"),
    ("GB18030", "gb18030", "GB18030"),
)

# Codes of one byte that Python has and that are controls or fillers of nobody's.
FILLERS = {"cp932": {b"\x80", b"\xa0", b"\xfd", b"\xfe", b"\xff"}}
# A mark that Python takes for the beginning of a longer code.
FILLER_OF_HANGUL = b"\xa4\xd4"


def four_bytes(number):
    digits = []
    for base, first in ((10, 0x30), (126, 0x81), (10, 0x30), (126, 0x81)):
        number, digit = divmod(number, base)
        digits.append(digit + first)
    return bytes(reversed(digits))


def is_private(text):
    return 0xE000 <= ord(text) < 0xF900


def python_says(codec, codes):
    said = {}
    for code in codes:
        try:
            text = code.decode(codec)
        except UnicodeDecodeError:
            continue
        # Not two codes of one byte each, of which the other tests are.
        if code not in FILLERS.get(codec, ()) and (len(text) == 1 or len(code) == 1):
            said[code] = text
    return said


def decoder_says(encoding, codes):
    lines = "".join(code.hex() + "\n" for code in codes)
    done = subprocess.run([DECODER, encoding], input=lines, capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, done
    texts = done.stdout.splitlines()
    assert len(texts) == len(codes)
    read = ((code, bytes.fromhex(text).decode()) for code, text in zip(codes, texts) if text != "-")
    return {code: text for code, text in read if len(text) == 1}


class EncodingsTest(unittest.TestCase):
    maxDiff = 2000

    def test_codes_of_one_byte(self):
        with open(MAKER) as script:
            codecs = re.findall(r'^    "([a-z]+[0-9-]*[a-z0-9-]*)": "([^"]+)"', script.read(), re.MULTILINE)
        codecs += [(f"cp{page}", f"windows-{page}") for page in (874, *range(1250, 1259))]
        codecs += [(f"cp{page}", f"ibm{page}") for page in (437, 737, 775, 850, 852, 855, 857, 858, 866, 869)]
        self.assertGreater(len(codecs), 35)
        for codec, names in codecs:
            for name in names.split():
                with self.subTest(name):
                    self.assertEqual(decoder_says(name, ONE_BYTE), python_says(codec, ONE_BYTE))

    def test_codes_of_several_bytes(self):
        for encoding, codec, _ in LARGE:
            codes = [*ONE_BYTE, *TWO_BYTES, *(THREE_BYTES if encoding == "EUC-JP" else ())]
            with self.subTest(encoding):
                said = python_says(codec, codes)
                self.assertGreater(len(said), 7000)
                ours = decoder_says(encoding, codes)
                if encoding == "EUC-KR":
                    self.assertEqual(ours.pop(FILLER_OF_HANGUL), "\u3164")
                self.assertEqual(ours, said)

    def test_codes_of_four_bytes(self):
        beyond = range(189000, 189000 + 0x100000)
        numbers = [*range(39420), *beyond[:200], *beyond[::1009], *beyond[-200:]]
        none = [39420, 50000, beyond.start - 1, beyond.stop, beyond.stop + 1000, 126 * 10 * 126 * 10 - 1]
        codes = [four_bytes(number) for number in numbers + none]
        said = python_says("gb18030", codes)
        self.assertEqual(len(said), len(set(numbers)))
        self.assertEqual(decoder_says("GB18030", codes), said)

    def test_the_machines_iconv_agrees(self):
        """But for the codes of private use, which many makers have filled: in Big5 with kana and Cyrillic."""
        for encoding, codec, name in LARGE:
            said = python_says(codec, TWO_BYTES)
            ours = decoder_says(encoding, list(said))
            lines = b"".join(code + b"\n" for code in ours)
            done = subprocess.run(["iconv", "-c", "-f", name, "-t", "UTF-8"], input=lines, capture_output=True)
            theirs = done.stdout.decode().split("\n")[:-1]
            self.assertEqual(len(theirs), len(ours))
            other = {code.hex(): (text, their) for (code, text), their in zip(ours.items(), theirs) if text != their}
            with self.subTest(encoding):
                public = {code: texts for code, texts in other.items() if not any(map(is_private, texts))}
                self.assertEqual(public, {})
                self.assertLess(len(other), 250)


if __name__ == "__main__":
    unittest.main(verbosity=2)
