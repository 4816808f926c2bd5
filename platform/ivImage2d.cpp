#include "platform/ivImage2d.h"

int ivImage2d::BitsPerPixel() const {
    switch (m_format) {
        case kIndexed1:
            return 1;
        case kIndexed4:
            return 4;
        case kGray8:
        case kIndexed8:
            return 8;
        case kBgr24:
            return 24;
        case kCmyk32:
            return 32;
    }
    return 8;
}

std::size_t ivImage2d::PaletteCapacity() const {
    switch (m_format) {
        case kIndexed1:
            return 2;
        case kIndexed4:
            return 16;
        case kIndexed8:
            return 256;
        default:
            return 0;
    }
}

ivStatus ivImage2d::Create(Format format, std::uint32_t width, std::uint32_t height) {
    m_format = format;
    std::uint64_t rowBits = std::uint64_t(width) * static_cast<std::uint64_t>(BitsPerPixel());
    std::uint64_t stride = ((rowBits + 31) / 32) * 4;
    if (width == 0 || height == 0 || stride * height > kMaxBytes) return kOutOfMemory;
    m_width = width;
    m_height = height;
    m_stride = static_cast<std::uint32_t>(stride);
    m_pixels.assign(stride * height, 0);
    m_palette.assign(PaletteCapacity(), 0);
    return kOk;
}
