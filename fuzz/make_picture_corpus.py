#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the seed files of the picture fuzz targets below fuzz/corpus/: the numbers in the order in which the
targets take them."""
import pathlib
import struct

ROOT = pathlib.Path(__file__).resolve().parent / "corpus"


def rect(left, top, right, bottom, fraction=None):
    """Coordinates of -20 to 100 units, with a fraction in 256ths where one is given."""
    kind = bytes([16]) if fraction is None else bytes([17, fraction])
    return b"".join(kind + bytes([value + 20]) for value in (left, top, right, bottom))


def save(target, name, data):
    folder = ROOT / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data)


def exchange(name, src, dst, src_size, dst_size, flags, dst_rect, src_rect, shape, dst_gamma=0, src_gamma=0):
    colors = 16
    data = bytes([src - 16, dst - 16, 1, src_size[0] - 1, src_size[1] - 1, colors, dst_size[0] - 1, dst_size[1] - 1,
                  colors])
    data += struct.pack("<I", flags) + dst_rect + src_rect + bytes([shape, dst_gamma, src_gamma]) + rect(1, 1, 9, 7)
    save("picture_exchange", name, data)


def composite(name, shape, src_size, dst_size, dst_rect, src_rect, mode, opacity, rest):
    data = bytes([shape, src_size[0] - 1, src_size[1] - 1, dst_size[0] - 1, dst_size[1] - 1])
    data += struct.pack("<I", 7) + dst_rect + src_rect + bytes([mode + 1, opacity]) + bytes(rest)
    save("picture_composite", name, data)


def scale(name, shape, src_size, dst_size, dst_rect, src_rect):
    data = bytes([shape, src_size[0] - 1, src_size[1] - 1, dst_size[0] - 1, dst_size[1] - 1])
    save("picture_scale", name, data + struct.pack("<I", 7) + dst_rect + src_rect)


WHOLE = rect(0, 0, 9, 9)
SAME = ((30, 20), (30, 20))
exchange("block", 31, 31, *SAME, 0, WHOLE, WHOLE, 0)
exchange("dither", 32, 29, *SAME, 3, WHOLE, WHOLE, 12)
exchange("gamma", 32, 27, *SAME, 3, WHOLE, WHOLE, 0, 2, 4)
exchange("palette", 29, 24, *SAME, 0, WHOLE, WHOLE, 4)
exchange("nibbles", 23, 19, (31, 20), (33, 21), 3, rect(1, 2, 19, 15), rect(3, 1, 21, 14), 15)
exchange("bits", 16, 17, (31, 20), (33, 21), 0, rect(1, 2, 19, 15), rect(3, 1, 21, 14), 3)
exchange("scaled", 25, 30, (30, 20), (50, 33), 3, WHOLE, WHOLE, 0)
exchange("bicubic", 29, 28, (30, 20), (50, 33), 0x4000003, WHOLE, WHOLE, 0)
exchange("area", 32, 32, (60, 40), (20, 13), 0x2000003, WHOLE, WHOLE, 0)
exchange("feather", 31, 29, *SAME, 0xF000 | 5 << 16, rect(-4, -3, 26, 17), rect(0, 0, 30, 20), 3)
exchange("subpixel", 27, 31, (30, 20), (40, 30), 0x1000003, rect(1, 1, 20, 17, 128), rect(0, 0, 30, 20, 64), 3)
exchange("subpixel_fast", 29, 29, (30, 20), (40, 30), 0x1000003, rect(1, 1, 20, 17, 128), rect(0, 0, 30, 20, 64), 3)
scale("linear", 0, (40, 30), (50, 40), WHOLE, WHOLE)
scale("cubic_fraction", 4 | 8 | 16, (40, 30), (50, 40), rect(1, 2, 30, 25, 100), rect(0, 1, 33, 28, 50))
scale("area", 32 | 4, (80, 70), (20, 15), WHOLE, WHOLE)
scale("box_x", 32 | 8 | 16, (80, 20), (20, 50), rect(0, 0, 20, 50, 1), rect(0, 0, 80, 20, 1))
scale("float_area", 1 | 32, (80, 70), (20, 15), WHOLE, WHOLE)
scale("float_cubic", 1 | 4 | 8, (30, 20), (45, 30), rect(2, 1, 40, 25, 77), WHOLE)
scale("whole_sparse", 2 | 4 | 128, (90, 90), (3, 3), rect(0, 0, 3, 3), rect(0, 0, 90, 90))
for kind in range(8):
    for mode in range(-1, 13, 5):
        composite(f"kind{kind}_mode{mode}", kind << 5 | (kind & 3) | 8 | 16, (40, 30), (50, 40), rect(1, 2, 30, 25, 100),
                  rect(0, 1, 33, 28, 50), mode, 128 if kind & 1 else 90,
                  [60, 70, 40, 30, 15, 100, kind & 1, kind % 4, kind & 1, kind >> 1 & 1, 7])
