#include "codecs/ExportReaders.h"

#include <algorithm>
#include <cstring>

#ifdef VANTREL_TEST_PNG
#include <png.h>
#endif
#ifdef VANTREL_TEST_TIFF
#include <tiffio.h>
#endif
#ifdef VANTREL_TEST_JPEG
#include <turbojpeg.h>
#endif

namespace {

std::uint32_t Le(const Bytes& b, std::size_t at, int bytes) {
    std::uint32_t v = 0;
    for (int i = bytes - 1; i >= 0; --i) v = v << 8 | b[at + static_cast<std::size_t>(i)];
    return v;
}

#ifdef VANTREL_TEST_TIFF
struct MemoryFile {
    const Bytes* bytes;
    toff_t pos = 0;
};

tmsize_t TiffRead(thandle_t h, void* buffer, tmsize_t size) {
    auto* f = static_cast<MemoryFile*>(h);
    const toff_t n = std::min<toff_t>(static_cast<toff_t>(size),
                                      f->bytes->size() - std::min<toff_t>(f->pos, f->bytes->size()));
    std::memcpy(buffer, f->bytes->data() + f->pos, n);
    f->pos += n;
    return static_cast<tmsize_t>(n);
}
tmsize_t TiffWrite(thandle_t, void*, tmsize_t) {
    return -1;
}
toff_t TiffSeek(thandle_t h, toff_t offset, int whence) {
    auto* f = static_cast<MemoryFile*>(h);
    f->pos = whence == SEEK_SET ? offset : whence == SEEK_CUR ? f->pos + offset : f->bytes->size() + offset;
    return f->pos;
}
int TiffClose(thandle_t) {
    return 0;
}
toff_t TiffSize(thandle_t h) {
    return static_cast<MemoryFile*>(h)->bytes->size();
}
int TiffMap(thandle_t, void**, toff_t*) {
    return 0;
}
void TiffUnmap(thandle_t, void*, toff_t) {}
#endif

}  // namespace

ReadBack ReadPng([[maybe_unused]] const Bytes& file) {
    ReadBack r;
#ifdef VANTREL_TEST_PNG
    if (file.size() < 33) return r;
    r.bits = file[24];  // IHDR: bit depth, then colour type
    r.layout = file[25];
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) return r;
    image.format = PNG_FORMAT_RGB;
    r.rgb.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, r.rgb.data(), 0, nullptr)) return r;
    r.width = image.width;
    r.height = image.height;
    r.ok = true;
#endif
    return r;
}

ReadBack ReadTiff([[maybe_unused]] const Bytes& file, [[maybe_unused]] int* compression) {
    ReadBack r;
#ifdef VANTREL_TEST_TIFF
    MemoryFile memory{&file};
    TIFF* tif = TIFFClientOpen("memory", "r", &memory, TiffRead, TiffWrite, TiffSeek, TiffClose, TiffSize,
                               TiffMap, TiffUnmap);
    if (!tif) return r;
    std::uint16_t photometric = 0, bits = 0, scheme = 0;
    TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &r.width);
    TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &r.height);
    TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &photometric);
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &scheme);
    r.layout = photometric;
    r.bits = bits;
    *compression = scheme;
    std::vector<std::uint32_t> raster(std::size_t(r.width) * r.height);
    if (TIFFReadRGBAImageOriented(tif, r.width, r.height, raster.data(), ORIENTATION_TOPLEFT, 0)) {
        for (std::uint32_t abgr : raster)
            r.rgb.insert(r.rgb.end(), {static_cast<std::uint8_t>(abgr), static_cast<std::uint8_t>(abgr >> 8),
                                       static_cast<std::uint8_t>(abgr >> 16)});
        r.ok = true;
    }
    TIFFClose(tif);
#endif
    return r;
}

ReadBack ReadJpeg([[maybe_unused]] const Bytes& file) {
    ReadBack r;
#ifdef VANTREL_TEST_JPEG
    tjhandle tj = tjInitDecompress();
    int width = 0, height = 0, subsampling = 0, colorspace = 0;
    if (tjDecompressHeader3(tj, file.data(), file.size(), &width, &height, &subsampling, &colorspace) == 0) {
        r.rgb.resize(std::size_t(width) * static_cast<std::size_t>(height) * 3);
        r.ok = tjDecompress2(tj, file.data(), file.size(), r.rgb.data(), width, 0, height, TJPF_RGB, 0) == 0;
        r.width = static_cast<std::uint32_t>(width);
        r.height = static_cast<std::uint32_t>(height);
        r.layout = colorspace;
        r.bits = 8;
    }
    tjDestroy(tj);
#endif
    return r;
}

ReadBack ReadBmp(const Bytes& file) {
    ReadBack r;
    if (file.size() < 54 || file[0] != 'B' || file[1] != 'M' || Le(file, 2, 4) != file.size()) return r;
    const std::uint32_t offset = Le(file, 10, 4);
    r.width = Le(file, 18, 4);
    r.height = Le(file, 22, 4);  // positive: bottom-up
    r.bits = static_cast<int>(Le(file, 28, 2));
    if (Le(file, 14, 4) != 40 || Le(file, 30, 4) != 0 || (r.bits != 8 && r.bits != 24)) return r;
    const std::size_t stride = (std::size_t(r.width) * static_cast<std::size_t>(r.bits) + 31) / 32 * 4;
    if (offset + stride * r.height != file.size()) return r;
    const std::uint32_t colours = Le(file, 46, 4);
    for (std::uint32_t y = 0; y < r.height; ++y) {
        const std::uint8_t* row = file.data() + offset + std::size_t(r.height - 1 - y) * stride;
        for (std::uint32_t x = 0; x < r.width; ++x) {
            const std::uint8_t* bgr = row + x * 3;
            if (r.bits == 8) {
                if (row[x] >= colours) return r;
                bgr = file.data() + 54 + row[x] * 4;  // the palette's B, G, R, 0
            }
            r.rgb.insert(r.rgb.end(), {bgr[2], bgr[1], bgr[0]});
        }
    }
    r.ok = true;
    return r;
}
