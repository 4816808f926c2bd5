#!/usr/bin/env python3
"""Writes the JBIG2 fixtures of tests/codecs. Debian has no JBIG2 encoder, so this is a small
one: the MQ arithmetic coder, generic regions (template 0) and a symbol dictionary with a text
region, enough to make PDF-style embedded streams (no file header).

    generic.jb2          page information, an immediate lossless generic region with the
                         bitmap of generic.pbm, end of page
    symbols-globals.jb2  a symbol dictionary of three glyphs (the JBIG2Globals stream)
    symbols.jb2          page information, an immediate text region that places the glyphs
                         of segment 0 of the globals, end of page; symbols.pbm is the page

generic.pbm is made first with ImageMagick (the command is in README.md). check.pdf wraps
both pages as JBIG2Decode images so that another decoder (Poppler's pdfimages) can confirm
the expected bitmaps; it is not used by the tests.
"""

# Probability estimation table: Qe, next index after MPS, after LPS, whether LPS switches.
QE = [
    (0x5601, 1, 1, 1), (0x3401, 2, 6, 0), (0x1801, 3, 9, 0), (0x0AC1, 4, 12, 0), (0x0521, 5, 29, 0),
    (0x0221, 38, 33, 0), (0x5601, 7, 6, 1), (0x5401, 8, 14, 0), (0x4801, 9, 14, 0), (0x3801, 10, 14, 0),
    (0x3001, 11, 17, 0), (0x2401, 12, 18, 0), (0x1C01, 13, 20, 0), (0x1601, 29, 21, 0), (0x5601, 15, 14, 1),
    (0x5401, 16, 14, 0), (0x5101, 17, 15, 0), (0x4801, 18, 16, 0), (0x3801, 19, 17, 0), (0x3401, 20, 18, 0),
    (0x3001, 21, 19, 0), (0x2801, 22, 19, 0), (0x2401, 23, 20, 0), (0x2201, 24, 21, 0), (0x1C01, 25, 22, 0),
    (0x1801, 26, 23, 0), (0x1601, 27, 24, 0), (0x1401, 28, 25, 0), (0x1201, 29, 26, 0), (0x1101, 30, 27, 0),
    (0x0AC1, 31, 28, 0), (0x09C1, 32, 29, 0), (0x08A1, 33, 30, 0), (0x0521, 34, 31, 0), (0x0441, 35, 32, 0),
    (0x02A1, 36, 33, 0), (0x0221, 37, 34, 0), (0x0141, 38, 35, 0), (0x0111, 39, 36, 0), (0x0085, 40, 37, 0),
    (0x0049, 41, 38, 0), (0x0025, 42, 39, 0), (0x0015, 43, 40, 0), (0x0009, 44, 41, 0), (0x0005, 45, 42, 0),
    (0x0001, 45, 43, 0), (0x5601, 46, 46, 0),
]


class Contexts:
    def __init__(self, n):
        self.index = [0] * n
        self.mps = [0] * n


class MQEncoder:
    def __init__(self):
        self.a, self.c, self.ct = 0x8000, 0, 12
        self.out = bytearray()
        self.b = 0  # the byte in progress; the first is a placeholder that is never written
        self.started = False

    def _byte_out(self):
        if self.b == 0xFF:
            self._emit(self.c >> 20, 0xFFFFF, 7)
        elif self.c < 0x8000000:
            self._emit(self.c >> 19, 0x7FFFF, 8)
        else:
            self.b += 1  # carry into the byte in progress
            if self.b == 0xFF:
                self.c &= 0x7FFFFFF
                self._emit(self.c >> 20, 0xFFFFF, 7)
            else:
                self._emit(self.c >> 19, 0x7FFFF, 8)

    def _emit(self, byte, mask, ct):
        if self.started:
            self.out.append(self.b)
        self.started = True
        self.b = byte & 0xFF  # a carry bit above the byte was added to the previous one
        self.c &= mask
        self.ct = ct

    def _renorm(self):
        while True:
            self.a = (self.a << 1) & 0xFFFF
            self.c <<= 1
            self.ct -= 1
            if self.ct == 0:
                self._byte_out()
            if self.a & 0x8000:
                break

    def encode(self, cx, i, bit):
        qe, nmps, nlps, switch = QE[cx.index[i]]
        self.a -= qe
        if bit == cx.mps[i]:
            if self.a & 0x8000:
                self.c += qe
                return
            if self.a < qe:
                self.a = qe
            else:
                self.c += qe
            cx.index[i] = nmps
        else:
            if self.a < qe:
                self.c += qe
            else:
                self.a = qe
            if switch:
                cx.mps[i] = 1 - cx.mps[i]
            cx.index[i] = nlps
        self._renorm()

    def finish(self):
        temp = self.c + self.a
        self.c |= 0xFFFF
        if self.c >= temp:
            self.c -= 0x8000
        self.c <<= self.ct
        self._byte_out()
        self.c <<= self.ct
        self._byte_out()
        self.out.append(self.b)
        if self.out[-1] != 0xFF:
            self.out.append(0xFF)
        self.out.append(0xAC)
        return bytes(self.out)


OOB = object()
RANGES = [(2, 0), (4, 4), (6, 20), (8, 84), (12, 340), (32, 4436)]


def encode_int(enc, cx, value):
    """The integer arithmetic coding procedure, backwards."""
    prev = [1]

    def bit(d):
        enc.encode(cx, prev[0], d)
        p = prev[0]
        prev[0] = (p << 1) | d if p < 256 else (((p << 1) | d) & 511) | 256

    sign, v = (1, 0) if value is OOB else (int(value < 0), abs(value))
    bit(sign)
    for n, (bits, offset) in enumerate(RANGES):
        if v < offset + (1 << bits) or n == len(RANGES) - 1:
            for _ in range(n):
                bit(1)
            if n < len(RANGES) - 1:
                bit(0)
            for k in reversed(range(bits)):
                bit(((v - offset) >> k) & 1)
            return


def encode_id(enc, cx, value, length):
    prev = 1
    for k in reversed(range(length)):
        d = (value >> k) & 1
        enc.encode(cx, prev, d)
        prev = (prev << 1) | d


NOMINAL_AT = [(3, -1), (-3, -1), (2, -2), (-2, -2)]


def encode_generic(enc, cx, rows):
    """Template 0 with the nominal adaptive pixels, no typical prediction."""
    h, w = len(rows), len(rows[0]) if rows else 0

    def px(x, y):
        return rows[y][x] if 0 <= x < w and 0 <= y < h else 0

    for y in range(h):
        for x in range(w):
            (a1x, a1y), (a2x, a2y), (a3x, a3y), (a4x, a4y) = NOMINAL_AT
            context = (px(x - 1, y) | px(x - 2, y) << 1 | px(x - 3, y) << 2 | px(x - 4, y) << 3 |
                       px(x + a1x, y + a1y) << 4 | px(x + 2, y - 1) << 5 | px(x + 1, y - 1) << 6 |
                       px(x, y - 1) << 7 | px(x - 1, y - 1) << 8 | px(x - 2, y - 1) << 9 |
                       px(x + a2x, y + a2y) << 10 | px(x + a3x, y + a3y) << 11 | px(x + 1, y - 2) << 12 |
                       px(x, y - 2) << 13 | px(x - 1, y - 2) << 14 | px(x + a4x, y + a4y) << 15)
            enc.encode(cx, context, rows[y][x])


def at_bytes():
    return bytes(v & 0xFF for p in NOMINAL_AT for v in p)


def be32(v):
    return v.to_bytes(4, "big")


def segment(number, kind, data, page=1, referred=()):
    assert len(referred) <= 4 and number <= 256
    return (be32(number) + bytes([kind, len(referred) << 5]) + bytes(referred) + bytes([page]) +
            be32(len(data)) + data)


def page_info(width, height):
    return segment_data_page(width, height)


def segment_data_page(width, height):
    return be32(width) + be32(height) + be32(0) + be32(0) + bytes([0]) + (0).to_bytes(2, "big")


def region_info(width, height, x=0, y=0):
    return be32(width) + be32(height) + be32(x) + be32(y) + bytes([0])  # OR onto the page


def read_pbm(path):
    with open(path, "rb") as f:
        data = f.read()
    fields = data.split(maxsplit=3)
    assert fields[0] == b"P4"
    w, h = int(fields[1]), int(fields[2])
    pixels = fields[3]
    stride = (w + 7) // 8
    return [[(pixels[y * stride + x // 8] >> (7 - x % 8)) & 1 for x in range(w)] for y in range(h)]


def write_pbm(path, rows):
    w = len(rows[0])
    out = bytearray(f"P4\n{w} {len(rows)}\n".encode())
    for row in rows:
        for x in range(0, w, 8):
            byte = 0
            for k in range(8):
                if x + k < w and row[x + k]:
                    byte |= 0x80 >> k
            out.append(byte)
    with open(path, "wb") as f:
        f.write(out)


def generic_stream(rows):
    enc = MQEncoder()
    encode_generic(enc, Contexts(1 << 16), rows)
    h, w = len(rows), len(rows[0])
    region = region_info(w, h) + bytes([0]) + at_bytes() + enc.finish()  # arithmetic, template 0
    return segment(0, 48, segment_data_page(w, h)) + segment(1, 39, region) + segment(2, 49, b"")


GLYPHS = [
    [".##.", "#..#", "####", "#..#", "#..#"],  # 4 x 5
    ["###.", "#..#", "###.", "#..#", "###."],  # 4 x 5
    ["#", "#", "#", ".", "#"],                 # 1 x 5
]
# (glyph, x, top row) on a 24 x 12 page, one strip per text line.
PLACEMENTS = [[(0, 1, 1), (1, 6, 1), (2, 12, 1), (0, 15, 1)], [(1, 3, 6), (2, 9, 6), (1, 11, 6)]]
PAGE_W, PAGE_H = 24, 12


def glyph_rows(g):
    return [[1 if c == "#" else 0 for c in line] for line in GLYPHS[g]]


def symbol_dictionary():
    enc = MQEncoder()
    iadh, iadw, iaex, gb = Contexts(512), Contexts(512), Contexts(512), Contexts(1 << 16)
    # One height class (all glyphs are 5 rows), widths as differences.
    encode_int(enc, iadh, 5)
    width = 0
    for g in range(len(GLYPHS)):
        rows = glyph_rows(g)
        encode_int(enc, iadw, len(rows[0]) - width)
        width = len(rows[0])
        encode_generic(enc, gb, rows)
    encode_int(enc, iadw, OOB)
    encode_int(enc, iaex, 0)            # no input symbols to skip
    encode_int(enc, iaex, len(GLYPHS))  # export every new one
    flags = (0).to_bytes(2, "big")      # arithmetic, template 0, no refinement
    n = len(GLYPHS)
    data = flags + at_bytes() + be32(n) + be32(n) + enc.finish()
    return segment(0, 0, data, page=0)


def text_region():
    enc = MQEncoder()
    iadt, iafs, iads, iaid = Contexts(512), Contexts(512), Contexts(512), Contexts(1 << 2)
    code_length = 2  # ceil(log2(3 symbols))
    strip_t = 0
    first_s = 0
    encode_int(enc, iadt, 0)  # initial STRIPT, negated by the decoder
    count = 0
    for line in PLACEMENTS:
        top = line[0][2]
        encode_int(enc, iadt, top - strip_t)
        strip_t = top
        cur_s = None
        for g, x, _ in line:
            if cur_s is None:
                encode_int(enc, iafs, x - first_s)
                first_s = x
            else:
                encode_int(enc, iads, x - cur_s)
            encode_id(enc, iaid, g, code_length)
            cur_s = x + len(GLYPHS[g][0]) - 1  # reference corner top left: S moves to the right edge
            count += 1
        encode_int(enc, iads, OOB)
    flags = (1 << 4).to_bytes(2, "big")  # REFCORNER = top left, one strip line, OR
    data = region_info(PAGE_W, PAGE_H) + flags + be32(count) + enc.finish()
    return segment(2, 6, data, referred=(0,))


def symbols_page():
    rows = [[0] * PAGE_W for _ in range(PAGE_H)]
    for line in PLACEMENTS:
        for g, x, y in line:
            for dy, r in enumerate(glyph_rows(g)):
                for dx, v in enumerate(r):
                    rows[y + dy][x + dx] |= v
    return rows


def check_pdf(images):
    """A one-page PDF per image stream, as JBIG2Decode images, for an independent decoder."""
    objects = []
    kids = []
    for i, (w, h, data, globals_data) in enumerate(images):
        base = 3 + i * 4
        kids.append(f"{base} 0 R")
        parms = f"/DecodeParms << /JBIG2Globals {base + 3} 0 R >> " if globals_data is not None else ""
        objects.append((base, f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {w} {h}] /Contents {base + 1} 0 R "
                              f"/Resources << /XObject << /Im0 {base + 2} 0 R >> >> >>".encode()))
        content = f"q {w} 0 0 {h} 0 0 cm /Im0 Do Q".encode()
        objects.append((base + 1, b"<< /Length %d >>\nstream\n" % len(content) + content + b"\nendstream"))
        objects.append((base + 2, (f"<< /Type /XObject /Subtype /Image /Width {w} /Height {h} /ColorSpace /DeviceGray "
                                   f"/BitsPerComponent 1 /Filter /JBIG2Decode {parms}/Length {len(data)} >>\nstream\n")
                        .encode() + data + b"\nendstream"))
        if globals_data is not None:
            objects.append((base + 3, b"<< /Length %d >>\nstream\n" % len(globals_data) + globals_data + b"\nendstream"))
    objects.append((1, b"<< /Type /Catalog /Pages 2 0 R >>"))
    objects.append((2, f"<< /Type /Pages /Kids [{' '.join(kids)}] /Count {len(kids)} >>".encode()))
    objects.sort()
    out = bytearray(b"%PDF-1.5\n")
    offsets = {}
    for num, body in objects:
        offsets[num] = len(out)
        out += b"%d 0 obj\n" % num + body + b"\nendobj\n"
    size = max(offsets) + 1
    xref = len(out)
    out += b"xref\n0 %d\n0000000000 65535 f \n" % size
    for n in range(1, size):
        out += b"%010d 00000 n \n" % offsets[n] if n in offsets else b"0000000000 65535 f \n"
    out += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (size, xref)
    return bytes(out)


def main():
    generic_rows = read_pbm("generic.pbm")
    generic = generic_stream(generic_rows)
    globals_data = symbol_dictionary()
    page = (segment(1, 48, segment_data_page(PAGE_W, PAGE_H)) + text_region() + segment(3, 49, b""))
    for name, data in [("generic.jb2", generic), ("symbols-globals.jb2", globals_data), ("symbols.jb2", page)]:
        with open(name, "wb") as f:
            f.write(data)
    write_pbm("symbols.pbm", symbols_page())
    with open("check.pdf", "wb") as f:
        f.write(check_pdf([(len(generic_rows[0]), len(generic_rows), generic, None),
                           (PAGE_W, PAGE_H, page, globals_data)]))


if __name__ == "__main__":
    main()
