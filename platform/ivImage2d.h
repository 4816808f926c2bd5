#pragma once
#include <cstdint>
#include <span>
#include <vector>

#include "platform/ivStatus.h"

// A bitmap: pixel format, size, rows of `Stride()` bytes (4-byte aligned, top row first)
// and, for the indexed formats, a palette of 32-bit entries.
class ivImage2d {
public:
    enum Format : std::int32_t {
        kGray8 = 1,
        kIndexed8 = 2,
        kBgr24 = 3,
        kCmyk32 = 5,
        kIndexed1 = 16,
        kIndexed4 = 17,
    };
    // The largest pixel buffer one bitmap may take.
    static constexpr std::uint64_t kMaxBytes = std::uint64_t(1) << 29;

    // kOutOfMemory when the size is zero, overflows or is over kMaxBytes. `bitsPerPixel`
    // chooses 2 instead of 4 bits for kIndexed4 (0 keeps the format's own depth).
    ivStatus Create(Format format, std::uint32_t width, std::uint32_t height, int bitsPerPixel = 0);

    Format PixelFormat() const { return m_format; }
    std::uint32_t Width() const { return m_width; }
    std::uint32_t Height() const { return m_height; }
    std::uint32_t Stride() const { return m_stride; }
    int BitsPerPixel() const { return m_bits; }
    std::uint8_t* Row(std::uint32_t y) { return m_pixels.data() + std::size_t(y) * m_stride; }
    const std::uint8_t* Row(std::uint32_t y) const { return m_pixels.data() + std::size_t(y) * m_stride; }
    std::span<std::uint8_t> Pixels() { return m_pixels; }

    std::size_t PaletteCapacity() const;
    std::vector<std::uint32_t>& Palette() { return m_palette; }
    const std::vector<std::uint32_t>& Palette() const { return m_palette; }

private:
    Format m_format = kGray8;
    int m_bits = 8;
    std::uint32_t m_width = 0, m_height = 0, m_stride = 0;
    std::vector<std::uint8_t> m_pixels;
    std::vector<std::uint32_t> m_palette;
};
