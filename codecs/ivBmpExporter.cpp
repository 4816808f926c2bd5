#include <array>
#include <new>
#include <vector>

#include "codecs/ivCodecIo.h"
#include "codecs/ivCodecs.h"
#include "codecs/ivExportRows.h"

// Windows bitmaps are simple enough to write ourselves, which keeps one export format in
// every build. Only the two layouts every reader knows: 24-bit and 8-bit with a palette.

namespace {

constexpr std::uint32_t kFileHeaderSize = 14;
constexpr std::uint32_t kInfoHeaderSize = 40;
constexpr std::uint32_t kPixelsPerMetre = 2835;  // 72 dpi

struct BmpLayout {
    int bits = 24;
    std::uint32_t paletteEntries = 0;
    ivExportRows::Layout rows = ivExportRows::kStored;
};

// Gray and indexed bitmaps become 8-bit with a palette, colour becomes 24-bit. Our BGR and
// 8-bit rows already have the file's byte order and 4-byte padding.
bool DescribeBmp(const ivImage2d& image, BmpLayout& out) {
    switch (image.PixelFormat()) {
        case ivImage2d::kBgr24:
            return true;
        case ivImage2d::kCmyk32:
            out.rows = ivExportRows::kBgr24;
            return true;
        case ivImage2d::kGray8:
        case ivImage2d::kIndexed8:
            out = {8, 256, ivExportRows::kStored};
            return true;
        case ivImage2d::kIndexed1:
        case ivImage2d::kIndexed4:
            out = {8, 1u << image.BitsPerPixel(), ivExportRows::kIndex8};
            return true;
        default:
            return false;
    }
}

void Put16(std::vector<std::uint8_t>& out, std::uint32_t v) {
    out.push_back(static_cast<std::uint8_t>(v));
    out.push_back(static_cast<std::uint8_t>(v >> 8));
}

void Put32(std::vector<std::uint8_t>& out, std::uint32_t v) {
    Put16(out, v & 0xFFFF);
    Put16(out, v >> 16);
}

std::vector<std::uint8_t> MakeHeaders(const ivImage2d& image, const BmpLayout& layout, std::uint32_t stride,
                                      std::uint32_t fileSize) {
    const std::uint32_t pixelOffset = kFileHeaderSize + kInfoHeaderSize + layout.paletteEntries * 4;
    std::vector<std::uint8_t> h;
    h.push_back('B');
    h.push_back('M');
    Put32(h, fileSize);
    Put32(h, 0);
    Put32(h, pixelOffset);
    Put32(h, kInfoHeaderSize);
    Put32(h, image.Width());
    Put32(h, image.Height());  // positive: rows run bottom-up
    Put16(h, 1);
    Put16(h, static_cast<std::uint32_t>(layout.bits));
    Put32(h, 0);  // BI_RGB, no compression
    Put32(h, stride * image.Height());
    Put32(h, kPixelsPerMetre);
    Put32(h, kPixelsPerMetre);
    Put32(h, layout.paletteEntries);
    Put32(h, 0);
    for (std::uint32_t i = 0; i < layout.paletteEntries; ++i) {
        std::uint8_t rgb[3] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i),
                               static_cast<std::uint8_t>(i)};
        if (image.PixelFormat() != ivImage2d::kGray8) ivExportRows::PaletteColour(image, i, rgb);
        h.insert(h.end(), {rgb[2], rgb[1], rgb[0], 0});
    }
    return h;
}

class ivBmpExporter final : public ivImageExporter {
public:
    ivStatus Save(ivStream& file, const ivImage2d& image) override;
};

ivStatus ivBmpExporter::Save(ivStream& file, const ivImage2d& image) {
    if (image.Width() == 0 || image.Height() == 0) return kInvalidArg;
    BmpLayout layout;
    if (!DescribeBmp(image, layout)) return kWrongType;
    const std::uint64_t stride =
        (std::uint64_t(image.Width()) * static_cast<std::uint64_t>(layout.bits) + 31) / 32 * 4;
    const std::uint64_t fileSize =
        kFileHeaderSize + kInfoHeaderSize + layout.paletteEntries * 4 + stride * image.Height();
    // The header's sizes are 32 bits (and the width and height signed): an 8-bit copy of a
    // large bilevel bitmap can outgrow them.
    if (fileSize > 0xFFFFFFFFu || image.Width() > 0x7FFFFFFFu || image.Height() > 0x7FFFFFFFu)
        return kWrongType;
    try {
        ivStatus st = ivWriteAll(file, MakeHeaders(image, layout, static_cast<std::uint32_t>(stride),
                                                   static_cast<std::uint32_t>(fileSize)));
        ivExportRows rows(image, layout.rows);
        const std::array<std::uint8_t, 4> zeros{};
        const std::size_t padding = static_cast<std::size_t>(stride) - rows.RowBytes();
        for (std::uint32_t y = image.Height(); y-- > 0 && Succeeded(st);) {
            st = ivWriteAll(file, {rows.Row(y), rows.RowBytes()});
            if (Succeeded(st) && padding) st = ivWriteAll(file, {zeros.data(), padding});
        }
        return st;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

}  // namespace

std::unique_ptr<ivImageExporter> CreateBmpExporter() {
    return std::make_unique<ivBmpExporter>();
}
