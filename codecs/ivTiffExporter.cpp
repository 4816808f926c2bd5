#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <memory>
#include <new>
#include <vector>

#include "codecs/ivCodecIo.h"
#include "codecs/ivCodecs.h"
#include "codecs/ivExportRows.h"

// TIFF through libtiff's client procedures over an ivStream, with per-file message handlers:
// libtiff's global handlers would print, and would be shared with every other user of the
// library in the process.

namespace {

struct TiffLayout {
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t samples = 1;
    std::uint16_t bits = 8;
    ivExportRows::Layout layout = ivExportRows::kStored;
};

// The same colour rules as the PNG writer. libtiff has no BGR order, so BGR is swapped here.
bool DescribeTiff(const ivImage2d& image, TiffLayout& out) {
    switch (image.PixelFormat()) {
        case ivImage2d::kGray8:
            return true;
        case ivImage2d::kBgr24:
        case ivImage2d::kCmyk32:
            out.photometric = PHOTOMETRIC_RGB;
            out.samples = 3;
            out.layout = ivExportRows::kRgb24;
            return true;
        case ivImage2d::kIndexed1:
        case ivImage2d::kIndexed4:
        case ivImage2d::kIndexed8:
            out.photometric = PHOTOMETRIC_PALETTE;
            out.bits = static_cast<std::uint16_t>(image.BitsPerPixel());
            return true;
        default:
            return false;
    }
}

ivStream& StreamOf(thandle_t handle) {
    return *static_cast<ivStream*>(handle);
}

tmsize_t OnTiffRead(thandle_t handle, void* buffer, tmsize_t size) {
    std::uint32_t got = 0;
    auto count = static_cast<std::uint32_t>(std::clamp<tmsize_t>(size, 0, 1 << 30));
    return Failed(StreamOf(handle).Read(buffer, count, &got)) ? -1 : static_cast<tmsize_t>(got);
}

tmsize_t OnTiffWrite(thandle_t handle, void* buffer, tmsize_t size) {
    if (size < 0) return -1;
    std::span<const std::uint8_t> bytes(static_cast<const std::uint8_t*>(buffer),
                                        static_cast<std::size_t>(size));
    return Failed(ivWriteAll(StreamOf(handle), bytes)) ? -1 : size;
}

toff_t OnTiffSeek(thandle_t handle, toff_t offset, int whence) {
    ivSeekOrigin origin = whence == SEEK_CUR   ? ivSeekOrigin::Current
                          : whence == SEEK_END ? ivSeekOrigin::End
                                               : ivSeekOrigin::Begin;
    std::int64_t pos = StreamOf(handle).Seek(static_cast<std::int64_t>(offset), origin);
    return pos < 0 ? static_cast<toff_t>(-1) : static_cast<toff_t>(pos);
}

int OnTiffClose(thandle_t) {
    return 0;  // the stream belongs to the caller
}

toff_t OnTiffSize(thandle_t handle) {
    return StreamOf(handle).Size();
}

int OnTiffMap(thandle_t, void**, toff_t*) {
    return 0;
}

void OnTiffUnmap(thandle_t, void*, toff_t) {}

// Returning 1 keeps the message from libtiff's global handlers. The exporter has no text to
// show, and libtiff's own return codes say whether writing failed.
int OnTiffMessage(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

struct TiffOptionsDeleter {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};
struct TiffDeleter {
    void operator()(TIFF* tif) const { TIFFClose(tif); }
};

void SetColourMap(TIFF* tif, const ivImage2d& image, int bits) {
    const std::size_t entries = std::size_t(1) << bits;
    std::vector<std::uint16_t> red(entries), green(entries), blue(entries);
    for (std::size_t i = 0; i < entries; ++i) {
        std::uint8_t rgb[3];
        ivExportRows::PaletteColour(image, static_cast<std::uint32_t>(i), rgb);
        red[i] = static_cast<std::uint16_t>(rgb[0] * 257);  // 16-bit entries: 0xFF becomes 0xFFFF
        green[i] = static_cast<std::uint16_t>(rgb[1] * 257);
        blue[i] = static_cast<std::uint16_t>(rgb[2] * 257);
    }
    TIFFSetField(tif, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
}

bool WriteTiff(TIFF* tif, const ivImage2d& image, const TiffLayout& layout) {
    const std::uint16_t compression =
        TIFFIsCODECConfigured(COMPRESSION_ADOBE_DEFLATE) ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE;
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, image.Width());
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, image.Height());
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, layout.bits);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, layout.samples);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, layout.photometric);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, compression);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tif, 0));
    if (layout.photometric == PHOTOMETRIC_PALETTE) SetColourMap(tif, image, layout.bits);
    // Encoders may work on the row in place, so even stored rows are handed over as copies.
    ivExportRows rows(image, layout.layout, true);
    for (std::uint32_t y = 0; y < image.Height(); ++y) {
        if (TIFFWriteScanline(tif, rows.WritableRow(y), y, 0) < 0) return false;
    }
    return TIFFFlush(tif) == 1;
}

class ivTiffExporter final : public ivImageExporter {
public:
    ivStatus Save(ivStream& file, const ivImage2d& image) override;
};

ivStatus ivTiffExporter::Save(ivStream& file, const ivImage2d& image) {
    if (image.Width() == 0 || image.Height() == 0) return kInvalidArg;
    TiffLayout layout;
    if (!DescribeTiff(image, layout)) return kWrongType;
    try {
        std::unique_ptr<TIFFOpenOptions, TiffOptionsDeleter> options(TIFFOpenOptionsAlloc());
        if (!options) return kOutOfMemory;
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnTiffMessage, nullptr);
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnTiffMessage, nullptr);
        std::unique_ptr<TIFF, TiffDeleter> tif(TIFFClientOpenExt("image", "w", &file, OnTiffRead, OnTiffWrite,
                                                                 OnTiffSeek, OnTiffClose, OnTiffSize,
                                                                 OnTiffMap, OnTiffUnmap, options.get()));
        if (!tif) return kFail;
        return WriteTiff(tif.get(), image, layout) ? kOk : kFail;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

}  // namespace

std::unique_ptr<ivImageExporter> CreateTiffExporter() {
    return std::make_unique<ivTiffExporter>();
}
