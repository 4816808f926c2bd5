#include "platform/ivImage2d.h"

namespace {

int DefaultBits(ivImage2d::Format format) {
    switch (format) {
        case ivImage2d::kIndexed1: return 1;
        case ivImage2d::kIndexed4: return 4;
        case ivImage2d::kGray8:
        case ivImage2d::kIndexed8: return 8;
        case ivImage2d::kBgr24: return 24;
        case ivImage2d::kCmyk32: return 32;
    }
    return 8;
}

}  // namespace

std::size_t ivImage2d::PaletteCapacity() const {
    switch (m_format) {
        case kIndexed1:
        case kIndexed4:
        case kIndexed8: return std::size_t(1) << m_bits;
        default: return 0;
    }
}

ivStatus ivImage2d::Create(Format format, std::uint32_t width, std::uint32_t height, int bitsPerPixel) {
    m_format = format;
    m_bits = format == kIndexed4 && bitsPerPixel == 2 ? 2 : DefaultBits(format);
    std::uint64_t rowBits = std::uint64_t(width) * static_cast<std::uint64_t>(m_bits);
    std::uint64_t stride = ((rowBits + 31) / 32) * 4;
    if (width == 0 || height == 0 || stride * height > kMaxBytes) return kOutOfMemory;
    m_width = width;
    m_height = height;
    m_stride = static_cast<std::uint32_t>(stride);
    m_pixels.assign(stride * height, 0);
    m_palette.assign(PaletteCapacity(), 0);
    return kOk;
}
