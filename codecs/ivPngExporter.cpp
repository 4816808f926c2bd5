#include <png.h>

#include <new>

#include "codecs/ivCodecIo.h"
#include "codecs/ivCodecs.h"
#include "codecs/ivExportRows.h"

// libpng reports errors by longjmp to the last setjmp. Everything with a destructor lives in
// Save(); WritePng() holds the setjmp and only plain data, and no callback has a live C++
// object when it calls png_error.

namespace {

// What the write callback reaches through libpng's pointer.
struct PngSink {
    ivStream* file;
};

struct PngHeader {
    int colorType = PNG_COLOR_TYPE_GRAY;
    int bitDepth = 8;
    bool bgr = false;  // rows are blue-green-red; libpng swaps them
    ivExportRows::Layout layout = ivExportRows::kStored;
    int paletteSize = 0;
    png_color palette[256] = {};
};

// The exporter has no text to show, so the message goes; libpng's own handler would print it.
void OnPngError(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void OnPngWarning(png_structp, png_const_charp) {}  // libpng's warnings never stop the file

void OnPngWrite(png_structp png, png_bytep data, png_size_t length) {
    auto* sink = static_cast<PngSink*>(png_get_io_ptr(png));
    if (Failed(ivWriteAll(*sink->file, {data, length}))) png_error(png, "Write error");
}

void OnPngFlush(png_structp) {}

// Gray stays gray and indexed keeps its palette and depth (our packed rows are PNG's own
// packing); BGR is swapped by libpng, CMYK is turned into RGB.
bool DescribePng(const ivImage2d& image, PngHeader& header) {
    switch (image.PixelFormat()) {
        case ivImage2d::kGray8:
            return true;
        case ivImage2d::kBgr24:
            header.colorType = PNG_COLOR_TYPE_RGB;
            header.bgr = true;
            return true;
        case ivImage2d::kCmyk32:
            header.colorType = PNG_COLOR_TYPE_RGB;
            header.layout = ivExportRows::kRgb24;
            return true;
        case ivImage2d::kIndexed1:
        case ivImage2d::kIndexed4:
        case ivImage2d::kIndexed8:
            break;
        default:
            return false;
    }
    header.colorType = PNG_COLOR_TYPE_PALETTE;
    header.bitDepth = image.BitsPerPixel();
    header.paletteSize = 1 << header.bitDepth;
    for (int i = 0; i < header.paletteSize; ++i) {
        std::uint8_t rgb[3];
        ivExportRows::PaletteColour(image, static_cast<std::uint32_t>(i), rgb);
        header.palette[i] = {rgb[0], rgb[1], rgb[2]};
    }
    return true;
}

// No object with a destructor in this frame, and nothing read after the longjmp.
bool WritePng(png_structp png, png_infop info, const PngHeader& header, ivExportRows& rows,
              std::uint32_t width, std::uint32_t height) {
    if (setjmp(png_jmpbuf(png))) return false;
    // libpng refuses images over a million pixels wide unless told otherwise.
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(png, info, width, height, header.bitDepth, header.colorType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (header.paletteSize) png_set_PLTE(png, info, header.palette, header.paletteSize);
    png_write_info(png, info);
    if (header.bgr) png_set_bgr(png);
    for (std::uint32_t y = 0; y < height; ++y) png_write_row(png, rows.Row(y));
    png_write_end(png, info);
    return true;
}

class PngStructs {
public:
    PngStructs() {
        m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnPngError, OnPngWarning);
        if (m_png) m_info = png_create_info_struct(m_png);
    }
    ~PngStructs() { png_destroy_write_struct(&m_png, m_info ? &m_info : nullptr); }
    PngStructs(const PngStructs&) = delete;
    PngStructs& operator=(const PngStructs&) = delete;

    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
};

class ivPngExporter final : public ivImageExporter {
public:
    ivStatus Save(ivStream& file, const ivImage2d& image) override;
};

ivStatus ivPngExporter::Save(ivStream& file, const ivImage2d& image) {
    if (image.Width() == 0 || image.Height() == 0) return kInvalidArg;
    try {
        PngHeader header;
        if (!DescribePng(image, header)) return kWrongType;
        ivExportRows rows(image, header.layout);
        PngSink sink{&file};
        PngStructs structs;
        if (!structs.m_png || !structs.m_info) return kOutOfMemory;
        png_set_write_fn(structs.m_png, &sink, OnPngWrite, OnPngFlush);
        return WritePng(structs.m_png, structs.m_info, header, rows, image.Width(), image.Height()) ? kOk
                                                                                                    : kFail;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

}  // namespace

std::unique_ptr<ivImageExporter> CreatePngExporter() {
    return std::make_unique<ivPngExporter>();
}
