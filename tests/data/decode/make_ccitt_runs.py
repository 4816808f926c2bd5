#!/usr/bin/env python3
"""Writes ccitt-runs.txt (a 1-bit test image, one row per line as run lengths, white first)
and ccitt-runs.g4 (the same image coded by libtiff's Group 4 encoder, raw strip data).

The rows use every terminating and make-up run length of both colours, runs past 2560, and
shapes whose edges move by 0 to 3 pixels per row (vertical modes) or end (pass mode).
Needs libtiff.so.6 only (no headers, no Python packages)."""
import ctypes
import os
import sys
import tempfile

WIDTH = 2800
MAKEUP = [64 * k for k in range(1, 28)]          # 64 .. 1728
EXTENDED = [1792 + 64 * k for k in range(13)]    # 1792 .. 2560


def rest(runs):
    return runs + [WIDTH - sum(runs)]


def shapes_row(y):
    """A disc and two slanted bands, as a row of pixels (True = black)."""
    px = [False] * WIDTH
    for x in range(WIDTH):
        disc = (x - 1400) ** 2 + (y - 20) ** 2 <= 18 ** 2
        band_a = 200 + 3 * y <= x < 260 + 2 * y
        band_b = 900 - 3 * y <= x < 960 - y
        px[x] = disc or band_a or band_b
    return px


def runs_of(px):
    runs, colour, n = [], False, 0
    for p in px:
        if p != colour:
            runs.append(n)
            colour, n = p, 0
        n += 1
    runs.append(n)
    return runs


def image_rows():
    rows = [[WIDTH], [0, WIDTH]]
    rows.append(rest(list(range(1, 64))))        # white odd, black even lengths
    rows.append([WIDTH])
    rows.append(rest([0] + list(range(1, 64))))  # white even, black odd lengths
    for k, m in enumerate(MAKEUP, 1):
        rows.append(rest([m + k, 5 + k]))        # white make-up
        rows.append(rest([3, m + k]))            # black make-up
    for k, m in enumerate(EXTENDED):
        rows.append(rest([m + 7]))               # white extended make-up
        rows.append(rest([2, m + 9]))            # black extended make-up
    rows.append(rest([2700]))                    # white past 2560
    rows.append(rest([10]))                      # black past 2560
    rows.extend(runs_of(shapes_row(y)) for y in range(40))
    rows.append([WIDTH])                         # ends the shapes: pass modes
    return rows


def pack(runs):
    bits = []
    for i, n in enumerate(runs):
        bits += [i % 2] * n                      # 1 = black in this file
    assert len(bits) == WIDTH
    out = bytearray((WIDTH + 7) // 8)
    for x, b in enumerate(bits):
        if b:
            out[x >> 3] |= 0x80 >> (x & 7)
    return bytes(out)


def encode_g4(rows):
    tiff = ctypes.CDLL("libtiff.so.6")
    tiff.TIFFOpen.restype = ctypes.c_void_p
    tiff.TIFFOpen.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
    tiff.TIFFWriteEncodedStrip.restype = ctypes.c_int64
    tiff.TIFFReadRawStrip.restype = ctypes.c_int64
    tiff.TIFFRawStripSize.restype = ctypes.c_int64
    path = os.path.join(tempfile.mkdtemp(), "runs.tif")
    t = ctypes.c_void_p(tiff.TIFFOpen(path.encode(), b"w"))
    u32 = ctypes.c_uint32
    for tag, value in [(256, WIDTH), (257, len(rows)), (258, 1), (277, 1), (259, 4),  # G4
                       (262, 0), (266, 1), (278, len(rows))]:  # min-is-white, MSB first
        tiff.TIFFSetField(t, u32(tag), ctypes.c_int(value))
    data = b"".join(pack(r) for r in rows)
    assert tiff.TIFFWriteEncodedStrip(t, u32(0), data, ctypes.c_int64(len(data))) == len(data)
    tiff.TIFFClose(t)
    t = ctypes.c_void_p(tiff.TIFFOpen(path.encode(), b"r"))
    size = tiff.TIFFRawStripSize(t, u32(0))
    buf = ctypes.create_string_buffer(size)
    assert tiff.TIFFReadRawStrip(t, u32(0), buf, ctypes.c_int64(size)) == size
    tiff.TIFFClose(t)
    return buf.raw


def main():
    here = os.path.dirname(os.path.abspath(sys.argv[0]))
    rows = image_rows()
    with open(os.path.join(here, "ccitt-runs.txt"), "w") as f:
        f.write("%d %d\n" % (WIDTH, len(rows)))
        for r in rows:
            f.write(" ".join(map(str, r)) + "\n")
    with open(os.path.join(here, "ccitt-runs.g4"), "wb") as f:
        f.write(encode_g4(rows))


main()
