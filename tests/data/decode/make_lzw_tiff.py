#!/usr/bin/env python3
"""Writes lzw-tiff.lzw: the bytes of Sample() coded by libtiff's LZW encoder (raw strip
data; TIFF's LZW is the PDF one with early change). Long enough for every code width and a
clear code from a full table. Needs libtiff.so.6 only (no headers, no Python packages)."""
import ctypes
import os
import sys
import tempfile

SIZE = 12000


def sample():
    """Letters a-h from a 31-bit linear congruential generator; the test makes the same."""
    out, x = bytearray(), 1
    for _ in range(SIZE):
        x = (x * 1103515245 + 12345) % (1 << 31)
        out.append(ord("a") + (x >> 16) % 8)
    return bytes(out)


def encode_lzw(data):
    tiff = ctypes.CDLL("libtiff.so.6")
    tiff.TIFFOpen.restype = ctypes.c_void_p
    tiff.TIFFOpen.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
    tiff.TIFFWriteEncodedStrip.restype = ctypes.c_int64
    tiff.TIFFReadRawStrip.restype = ctypes.c_int64
    tiff.TIFFRawStripSize.restype = ctypes.c_int64
    path = os.path.join(tempfile.mkdtemp(), "sample.tif")
    t = ctypes.c_void_p(tiff.TIFFOpen(path.encode(), b"w"))
    u32 = ctypes.c_uint32
    # One row of 8-bit grey samples, LZW (5), no predictor.
    for tag, value in [(256, len(data)), (257, 1), (258, 8), (277, 1), (259, 5), (262, 1), (278, 1)]:
        tiff.TIFFSetField(t, u32(tag), ctypes.c_int(value))
    assert tiff.TIFFWriteEncodedStrip(t, u32(0), data, ctypes.c_int64(len(data))) == len(data)
    tiff.TIFFClose(t)
    t = ctypes.c_void_p(tiff.TIFFOpen(path.encode(), b"r"))
    size = tiff.TIFFRawStripSize(t, u32(0))
    buf = ctypes.create_string_buffer(size)
    assert tiff.TIFFReadRawStrip(t, u32(0), buf, ctypes.c_int64(size)) == size
    tiff.TIFFClose(t)
    return buf.raw


here = os.path.dirname(os.path.abspath(sys.argv[0]))
with open(os.path.join(here, "lzw-tiff.lzw"), "wb") as f:
    f.write(encode_lzw(sample()))
