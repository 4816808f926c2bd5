#pragma once
#include <cstdint>
#include <vector>

#include "platform/ivImage2d.h"

// Resampling of a bitmap for display: per axis, which source pixels make each target pixel
// and with what weights (an area average when shrinking, a linear blend when enlarging).
class ivImageScale {
public:
    struct Span {
        std::uint32_t first = 0;  // first source pixel
        std::uint32_t weights = 0;  // index into the weight list
        std::uint32_t count = 0;  // source pixels used
    };
    static ivImageScale Create(std::uint32_t sourceSize, std::uint32_t targetSize);

    std::uint32_t SourceSize() const { return m_source; }
    std::uint32_t TargetSize() const { return static_cast<std::uint32_t>(m_spans.size()); }
    const Span& At(std::uint32_t target) const { return m_spans[target]; }
    const float* Weights(const Span& s) const { return m_weights.data() + s.weights; }

private:
    std::uint32_t m_source = 0;
    std::vector<Span> m_spans;
    std::vector<float> m_weights;
};

// One source row of any format as red, green, blue bytes (`out` holds width × 3).
void RowToRgb(const ivImage2d& image, std::uint32_t y, std::uint8_t* out);

// Renders target rows [y0, y1) and columns [x0, x1) of the scaled image into `out` (RGB, rows of
// `stride` bytes, the first row being y0, the first column x0). Rows may be rendered by several
// threads at once: the image and tables are only read.
void RenderScaledRows(const ivImage2d& image, const ivImageScale& sx, const ivImageScale& sy, std::uint32_t y0,
                      std::uint32_t y1, std::uint32_t x0, std::uint32_t x1, std::uint8_t* out, std::size_t stride);
