#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the seed files of the fuzz targets below fuzz/corpus/. The numbers that a media target takes from the end
of its input stand behind each image; a format stands behind the two bytes of its buffer's size."""
import pathlib
import struct

ROOT = pathlib.Path(__file__).resolve().parent / "corpus"
AUDIO = bytes.fromhex("f3acd3118cd100c04f8edb8a")
RIFF64 = b"riff" + bytes.fromhex("2e91cf11a5d628db04c10000")
LIST64 = b"list" + bytes.fromhex("2f91cf11a5d628db04c10000")
JUNK64 = b"junk" + bytes.fromhex("f3ac3d118cd100c04f8edb8a")
DISPLAY = bytes.fromhex("25ca2c61bb92554c84087bda2f15bd27")


def words(*values):
    return b"".join(struct.pack("<I", value) for value in values)


def chunk(name, data, order="<"):
    return name + struct.pack(order + "I", len(data)) + data + b"\0" * (len(data) % 2)


def riff(form, *chunks):
    body = form + b"".join(chunks)
    return b"RIFF" + words(len(body)) + body


def chunk64(label, data):
    return label + struct.pack("<Q", 24 + len(data)) + data + b"\0" * (-len(data) % 8)


def riff64(*chunks):
    body = b"wave" + AUDIO + b"".join(chunks)
    return RIFF64 + struct.pack("<Q", 24 + len(body)) + body


def form(kind, *chunks):
    return chunk(b"FORM", kind + b"".join(chunks), ">")


def fmt(tag, channels, rate, bits, extra=0):
    align = bits // 8 * channels
    return struct.pack("<HHIIHHH", tag, channels, rate, rate * align, align, bits, extra)


def save(target, name, image):
    folder = ROOT / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(image)


SAMPLES = bytes(range(64))
INFO = chunk(b"LIST", b"INFO" + chunk(b"INAM", b"title\0") + chunk(b"IART", b"me\0"))
PCM = chunk(b"fmt ", fmt(1, 2, 44100, 16))
FIND_DATA = struct.unpack("<I", b"data")[0]
FIND_INFO = struct.unpack("<I", b"INFO")[0]
WAVE = riff(b"WAVE", PCM, INFO, chunk(b"data", SAMPLES))
WAVE64 = riff64(chunk64(b"fmt " + AUDIO, fmt(1, 2, 44100, 16)), chunk64(b"data" + AUDIO, SAMPLES))
LISTS64 = riff64(
    chunk64(LIST64, b"wave" + AUDIO + chunk64(DISPLAY, words(1) + b"text")), chunk64(JUNK64, b""),
    chunk64(DISPLAY, words(8) + b"picture"), chunk64(b"bext" + AUDIO, b"abc"))
RATE = bytes.fromhex("400eac44000000000000")
COMMON = struct.pack(">HIH", 2, 16, 16) + RATE
SOUND = chunk(b"SSND", struct.pack(">II", 0, 0) + SAMPLES, ">")
MARK = chunk(b"MARK", struct.pack(">HHIB", 2, 1, 7, 3) + b"abc" + struct.pack(">HIB", 2, 9, 0) + b"\0", ">")
AIFF = form(b"AIFF", chunk(b"COMM", COMMON, ">"), MARK, SOUND)
AIFC = form(b"AIFC", chunk(b"COMM", COMMON + b"sowt\0\0", ">"), SOUND)
CDDA = riff(b"CDDA", chunk(b"fmt ", struct.pack("<HHIII8B", 1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0)))

save("riff_walk", "wave", WAVE + words(len(WAVE), FIND_DATA))
save("riff_walk", "list", WAVE + words(len(WAVE), FIND_INFO))
save("riff_walk", "cdda", CDDA + words(36, FIND_DATA))
save("riff_walk", "wild", riff(b"WAVE", b"wild" + words(0xFFFFFFFF), INFO) + words(0xFFFFFFFF, FIND_INFO))
save("riff_walk", "short_list", riff(b"WAVE", b"LIST" + words(2), INFO) + words(60, FIND_INFO))
save("riff64_walk", "wave", WAVE64 + words(1000, 1))
save("riff64_walk", "lists", LISTS64 + words(len(LISTS64) - 40, 4))
save("riff64_walk", "wild", riff64(DISPLAY + struct.pack("<Q", 1 << 62) + words(1)) + words(0xFFFFFFFF, 4))
save("riff64_walk", "largest", riff64(DISPLAY + struct.pack("<Q", (1 << 63) - 1) + b"data") + words(1000, 4))
save("iff_walk", "aiff", AIFF + words(2))
save("iff_walk", "aifc", AIFC + words(1))
save("iff_walk", "wild", form(b"AIFF", chunk(b"COMM", COMMON, ">"), b"SSND" + b"\xff" * 12) + words(0))
save("mriff_image", "wave", WAVE + words(100))
save("mriff_image", "extensible", riff(b"WAVE", chunk(b"data", SAMPLES), chunk(b"fmt ", fmt(0xFFFE, 2, 44100, 16, 22)))
     + words(3))
save("mriff_image", "room", b"\0" * 80 + words(0))
save("wave_repair", "wave", b"\xdd" * 20 + WAVE[20:] + words(3))
save("wave_repair", "bytes", b"\xdd" * 70 + b"data" + words(0) + SAMPLES + words(3))
save("wave_repair", "short_format", riff(b"WAVE", chunk(b"fmt ", fmt(1, 2, 44100, 16)[:16]), chunk(b"data", SAMPLES))
     + words(3))
save("wave_repair", "wave64", b"\xdd" * 64 + WAVE64[64:] + words(3))
save("wave_repair", "limit", b"\xdd" * 200 + words(104))


def peaks(bits, count, interval=100, header=64, samples=1000, channels=2, magic=b"ZRPK"):
    head = magic + words(1, header, 0, bits, channels, interval) + struct.pack("<q", samples) + words(0) + bytes(24)
    return head.ljust(header, b"\0") + bytes(n % 251 for n in range(count * 2 * channels * bits // 8))


for name, image, choice in (
        ("whole8", peaks(8, 10), 12345678), ("whole16", peaks(16, 10), 987654321), ("cut", peaks(16, 3), 409601),
        ("long_header", peaks(8, 10, header=90), 4096 * 900), ("interval", peaks(8, 10, interval=0), 4096 * 999 + 3),
        ("wild_length", peaks(8, 10, samples=(1 << 63) - 1), 4096 * 262143 + 512 * 7),
        ("negative_length", peaks(8, 10, samples=-5), 4096 * 1000), ("channels", peaks(16, 10, channels=33), 4096),
        ("magic", peaks(8, 10, magic=b"RIFF"), 4096 * 1000 + 1), ("empty", b"", 4096 * 1000)):
    save("peak_reader", name, image + words(choice))

for name, size, text in (
        ("escapes", 200, "$$ %% $% 100%"), ("token", 200, "$(AppName)$(SMPTE.Label.Drop)$(Nobody)$(Open"),
        ("separators", 200, "$*$,$:$!:$!.$!,$&:$&.%!x"), ("numbers", 200, "$(1234567.5)$(-1,0)$(.5)$(12"),
        ("integers", 200, "%d %-08d %+.5i %#x %I64u %hhd $9d $I64d"), ("reals", 200, "%f %.3e %#g $f $g %300.200f"),
        ("fixed", 200, "%.2z $.3z %z %.99999z"), ("texts", 200, "%s|%5.2s|%hs|%c|%lc|%2000s"),
        ("cut", 12, "ab%s$(SMPTE.Label.Drop)%d"), ("junk", 90, "%5$-+d%y#0.%.%d%99999999999999999999d"),
        ("inserts", 90, "%1 %2!5d! %99!x! %n%0"), ("unended", 90, "$-+ #0123.456")):
    save("printf_format", name, struct.pack("<H", size) + text.encode("utf-16-le"))

# A window's operations: a byte whose low bits name it and whose high bits choose, then its numbers.
WINDOW, NEAR_WINDOW, MODE, FAR_SEEK, SEEK, READ, WRITE = 0, 1, 2, 3, 4, 6, 7
for name, operations in (
        ("cut", bytes((NEAR_WINDOW | 0x10, 20, 30, SEEK, 0, 0, READ, 20, READ, 20, READ, 1))),
        ("zeroed", bytes((NEAR_WINDOW | 0x30, 20, 30, MODE | 0x20, SEEK, 25, 0, READ, 96, SEEK | 0x20, 0, 0))),
        ("overrun", bytes((NEAR_WINDOW | 0x30, 90, 20, SEEK, 15, 0, WRITE, 60, SEEK | 0x20, 0xFF, 0xFF, READ, 9))),
        ("gap", bytes((SEEK, 180, 0, WRITE, 96, WRITE, 9, NEAR_WINDOW | 0x10, 100, 100, SEEK, 0, 0, READ, 96))),
        ("wild", bytes((WINDOW | 0x10,)) + struct.pack("<QQ", 10, (1 << 64) - 5) + bytes((FAR_SEEK | 0x20,))
         + struct.pack("<q", -(1 << 63)) + bytes((FAR_SEEK | 0x10,)) + struct.pack("<q", (1 << 63) - 1)
         + bytes((READ, 50, SEEK, 3, 0, READ, 50)))):
    save("protected_stream", name, operations)
