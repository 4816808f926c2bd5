#include "codecs/ivExportRows.h"

#include <algorithm>
#include <cstring>

#include "platform/ivCodec.h"

namespace {

std::uint32_t IndexAt(const std::uint8_t* row, std::uint32_t x, int bits) {
    std::uint32_t bit = x * static_cast<std::uint32_t>(bits);
    int shift = 8 - bits - static_cast<int>(bit & 7);  // the first pixel sits in the high bits
    return (row[bit >> 3] >> shift) & ((1u << bits) - 1);
}

}  // namespace

ivExportRows::ivExportRows(const ivImage2d& image, Layout layout, bool writable)
    : m_image(image), m_layout(layout) {
    switch (layout) {
        case kStored:
            m_rowBytes = image.Stride();
            break;
        case kRgb24:
        case kBgr24:
            m_rowBytes = std::size_t(image.Width()) * 3;
            break;
        case kIndex8:
            m_rowBytes = image.Width();
            break;
    }
    if (layout != kStored || writable) m_buffer.resize(m_rowBytes);
}

int ivExportRows::IndexBits(const ivImage2d& image) {
    switch (image.PixelFormat()) {
        case ivImage2d::kIndexed1:
        case ivImage2d::kIndexed4:
        case ivImage2d::kIndexed8:
            return image.BitsPerPixel();
        default:
            return 0;
    }
}

void ivExportRows::PaletteColour(const ivImage2d& image, std::uint32_t index, std::uint8_t rgb[3]) {
    const auto& palette = image.Palette();
    std::uint32_t entry = index < palette.size() ? palette[index] : 0;
    rgb[0] = static_cast<std::uint8_t>(entry);
    rgb[1] = static_cast<std::uint8_t>(entry >> 8);
    rgb[2] = static_cast<std::uint8_t>(entry >> 16);
}

const std::uint8_t* ivExportRows::Row(std::uint32_t y) {
    return m_layout == kStored ? m_image.Row(y) : WritableRow(y);
}

std::uint8_t* ivExportRows::WritableRow(std::uint32_t y) {
    const std::uint8_t* src = m_image.Row(y);
    switch (m_layout) {
        case kStored:
            std::memcpy(m_buffer.data(), src, m_rowBytes);
            break;
        case kRgb24:
            ToRgb(src, m_buffer.data());
            break;
        case kBgr24:
            ToRgb(src, m_buffer.data());
            for (std::size_t i = 0; i + 2 < m_rowBytes; i += 3) std::swap(m_buffer[i], m_buffer[i + 2]);
            break;
        case kIndex8:
            ToIndex8(src, m_buffer.data());
            break;
    }
    return m_buffer.data();
}

void ivExportRows::ToRgb(const std::uint8_t* src, std::uint8_t* dst) const {
    const std::uint32_t width = m_image.Width();
    switch (m_image.PixelFormat()) {
        case ivImage2d::kGray8:
            for (std::uint32_t x = 0; x < width; ++x, dst += 3) dst[0] = dst[1] = dst[2] = src[x];
            break;
        case ivImage2d::kBgr24:
            for (std::uint32_t x = 0; x < width; ++x, src += 3, dst += 3) {
                dst[0] = src[2];
                dst[1] = src[1];
                dst[2] = src[0];
            }
            break;
        case ivImage2d::kCmyk32:
            for (std::uint32_t x = 0; x < width; ++x, src += 4, dst += 3) {
                dst[0] = CmykToRgbComponent(src[0], src[3]);
                dst[1] = CmykToRgbComponent(src[1], src[3]);
                dst[2] = CmykToRgbComponent(src[2], src[3]);
            }
            break;
        case ivImage2d::kIndexed1:
        case ivImage2d::kIndexed4:
        case ivImage2d::kIndexed8: {
            const int bits = m_image.BitsPerPixel();
            for (std::uint32_t x = 0; x < width; ++x, dst += 3)
                PaletteColour(m_image, IndexAt(src, x, bits), dst);
            break;
        }
    }
}

void ivExportRows::ToIndex8(const std::uint8_t* src, std::uint8_t* dst) const {
    const int bits = IndexBits(m_image);
    if (bits == 0 || bits == 8) {
        // Gray levels, or indices that are bytes already.
        std::memcpy(dst, src, m_rowBytes);
        return;
    }
    for (std::uint32_t x = 0; x < m_image.Width(); ++x)
        dst[x] = static_cast<std::uint8_t>(IndexAt(src, x, bits));
}
