#!/usr/bin/env python3
"""Makes the JPEG and JPEG 2000 fixtures of tests/codecs from ImageMagick's built-in rose image.

Run in this directory. Needs ImageMagick 6 (convert), OpenJPEG's tools (opj_compress,
opj_decompress from Debian's libopenjp2-tools) and a C compiler with libjpeg's headers for
write_cmyk_jpeg.c. Expected pixels are raw bytes, top row first:
.gray one byte a pixel, .rgb three, .cmyk four.
"""
import os
import subprocess
import tempfile

W, H = 32, 24


def run(*args, **kw):
    print(" ".join(args))
    return subprocess.run(args, check=True, capture_output=True, **kw).stdout


def raw(path, kind):
    return run("convert", path, kind + ":-")


def write(name, data):
    with open(name, "wb") as f:
        f.write(data)


def planar(interleaved, comps, bytes_per_sample=1):
    n = bytes_per_sample
    return b"".join(bytes(b for i in range(c * n, len(interleaved), comps * n) for b in interleaved[i:i + n])
                    for c in range(comps))


def main():
    tmp = tempfile.mkdtemp()
    rose = os.path.join(tmp, "rose.ppm")
    run("convert", "rose:", "-crop", f"{W}x{H}+20+10", "+repage", rose)
    gray_pgm = os.path.join(tmp, "rose.pgm")
    run("convert", rose, "-colorspace", "Gray", gray_pgm)
    write("rose.rgb", raw(rose, "rgb"))
    write("rose.gray", raw(gray_pgm, "gray"))
    write("rose.cmyk", run("convert", rose, "-colorspace", "CMYK", "cmyk:-"))

    # JPEG: the expected pixels are ImageMagick's decoding of each file.
    run("convert", gray_pgm, "-quality", "90", "gray.jpg")
    run("convert", rose, "-quality", "90", "rgb.jpg")
    run("convert", rose, "-quality", "90", "-interlace", "JPEG", "progressive.jpg")
    run("convert", rose, "-colorspace", "CMYK", "-quality", "90", "cmyk-adobe.jpg")
    write("gray.jpg.gray", raw("gray.jpg", "gray"))
    write("rgb.jpg.rgb", raw("rgb.jpg", "rgb"))
    write("progressive.jpg.rgb", raw("progressive.jpg", "rgb"))
    write("cmyk-adobe.jpg.cmyk", raw("cmyk-adobe.jpg", "cmyk"))
    # ImageMagick writes CMYK as YCCK; four plain components need libjpeg directly.
    writer = os.path.join(tmp, "write_cmyk_jpeg")
    run("cc", "-O2", "-o", writer, "write_cmyk_jpeg.c", "-ljpeg")
    with open("rose.cmyk", "rb") as f:
        cmyk = f.read()
    write("cmyk-adobe-transform0.jpg", run(writer, str(W), str(H), "adobe", input=cmyk))
    write("cmyk-no-adobe.jpg", run(writer, str(W), str(H), "plain", input=cmyk))
    write("cmyk-adobe-transform0.jpg.cmyk", raw("cmyk-adobe-transform0.jpg", "cmyk"))
    # ImageMagick inverts every CMYK JPEG it reads, marker or not: the complement is what
    # the file holds.
    write("cmyk-no-adobe.jpg.cmyk", bytes(255 - b for b in raw("cmyk-no-adobe.jpg", "cmyk")))

    # JPEG 2000, lossless: the expected pixels are the sources.
    run("opj_compress", "-i", gray_pgm, "-o", "gray.j2k", "-n", "3")
    run("opj_compress", "-i", rose, "-o", "rgb.jp2", "-n", "3")
    rgba = os.path.join(tmp, "rgba.pam")
    run("convert", rose, "-alpha", "set", "-channel", "A", "-evaluate", "set", "50%", "+channel", rgba)
    run("opj_compress", "-i", rgba, "-o", "rgba.jp2", "-n", "3")
    cmyk_raw = os.path.join(tmp, "cmyk.raw")
    with open("rose.cmyk", "rb") as f:
        write(cmyk_raw, planar(f.read(), 4))
    run("opj_compress", "-i", cmyk_raw, "-F", f"{W},{H},4,8,u", "-o", "cmyk.j2k", "-n", "3")
    # 12 bits: each gray level times 16 plus a ramp in the low bits, which scaling drops.
    with open("rose.gray", "rb") as f:
        gray = f.read()
    gray12 = b"".join(((g << 4) | (i % 16)).to_bytes(2, "big") for i, g in enumerate(gray))
    gray12_raw = os.path.join(tmp, "gray12.raw")
    write(gray12_raw, gray12)
    run("opj_compress", "-i", gray12_raw, "-F", f"{W},{H},1,12,u", "-o", "gray12.j2k", "-n", "3")

    # sYCC with 4:2:0 chroma: YCbCr planes from the rose, each chroma sample the mean of a
    # 2 x 2 block. opj_compress marks a .yuv source as sYCC; opj_decompress's conversion
    # gives the expected RGB.
    with open("rose.rgb", "rb") as f:
        rgb = f.read()
    px = [rgb[i:i + 3] for i in range(0, len(rgb), 3)]
    clamp = lambda v: max(0, min(255, int(round(v))))
    y_plane = bytes(clamp(0.299 * r + 0.587 * g + 0.114 * b) for r, g, b in px)
    cb, cr = bytearray(), bytearray()
    for y in range(0, H, 2):
        for x in range(0, W, 2):
            block = [px[(y + j) * W + x + i] for i in (0, 1) for j in (0, 1)]
            r, g, b = (sum(p[k] for p in block) / 4 for k in range(3))
            cb.append(clamp(128 - 0.168736 * r - 0.331264 * g + 0.5 * b))
            cr.append(clamp(128 + 0.5 * r - 0.418688 * g - 0.081312 * b))
    yuv = os.path.join(tmp, "sycc.yuv")
    write(yuv, y_plane + cb + cr)
    run("opj_compress", "-i", yuv, "-F", f"{W},{H},3,8,u@1x1:2x2:2x2", "-o", "sycc420.jp2", "-n", "3")
    decoded = os.path.join(tmp, "sycc420.ppm")
    run("opj_decompress", "-i", "sycc420.jp2", "-o", decoded)
    write("sycc420.jp2.rgb", raw(decoded, "rgb"))

    # Sanity: ImageMagick reads the lossless files back as their sources.
    for name, kind, source in [("gray.j2k", "gray", "rose.gray"), ("rgb.jp2", "rgb", "rose.rgb"),
                               ("rgba.jp2", "rgb", "rose.rgb")]:
        with open(source, "rb") as f:
            assert raw(name, kind) == f.read(), name

if __name__ == "__main__":
    main()
