#pragma once
#include <cstdint>
#include <vector>

#include "platform/ivImage2d.h"

// Hands out the rows of a bitmap in the layout a file writer takes. Rows that need no change
// come straight from the bitmap; the others are converted into a buffer this object owns, so
// a row is valid until the next call. The buffer is allocated up front: no call allocates,
// which lets them run between a C library's setjmp and its longjmp.
class ivExportRows {
public:
    enum Layout {
        kStored,  // the bitmap's own bytes
        kRgb24,   // any format as R, G, B; CMYK through CmykToRgbComponent
        kBgr24,   // the same in blue-green-red order
        kIndex8,  // one byte per pixel: palette indices, or gray levels of a gray bitmap
    };

    // The bitmap must outlive this object. `writable` is for writers that may scribble on
    // the rows they are given: it makes room for WritableRow().
    ivExportRows(const ivImage2d& image, Layout layout, bool writable = false);

    std::size_t RowBytes() const { return m_rowBytes; }
    const std::uint8_t* Row(std::uint32_t y);
    // Row `y` in the buffer, converted or copied; only with `writable`.
    std::uint8_t* WritableRow(std::uint32_t y);

    // Bits per pixel of the palette indices of an indexed bitmap, 0 for the other formats.
    static int IndexBits(const ivImage2d& image);
    // Palette entry `index` as its red, green and blue bytes; black past the palette's end.
    static void PaletteColour(const ivImage2d& image, std::uint32_t index, std::uint8_t rgb[3]);

private:
    void ToRgb(const std::uint8_t* src, std::uint8_t* dst) const;
    void ToIndex8(const std::uint8_t* src, std::uint8_t* dst) const;

    const ivImage2d& m_image;
    Layout m_layout;
    std::size_t m_rowBytes = 0;
    std::vector<std::uint8_t> m_buffer;
};
