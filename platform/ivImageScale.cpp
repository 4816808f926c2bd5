#include "platform/ivImageScale.h"

#include <algorithm>
#include <cmath>

#include "platform/ivCodec.h"

ivImageScale ivImageScale::Create(std::uint32_t sourceSize, std::uint32_t targetSize) {
    ivImageScale s;
    s.m_source = sourceSize;
    s.m_spans.resize(targetSize);
    if (sourceSize == 0 || targetSize == 0) return s;
    const double ratio = double(sourceSize) / double(targetSize);
    for (std::uint32_t t = 0; t < targetSize; ++t) {
        Span& span = s.m_spans[t];
        span.weights = static_cast<std::uint32_t>(s.m_weights.size());
        if (ratio > 1) {
            // Shrinking: the source pixels under [t, t + 1) × ratio, each by how much it is covered.
            const double from = t * ratio, to = (t + 1) * ratio;
            span.first = static_cast<std::uint32_t>(from);
            const auto last = std::min<std::uint32_t>(static_cast<std::uint32_t>(std::ceil(to)), sourceSize);
            for (std::uint32_t i = span.first; i < last; ++i) {
                const double cover = std::min<double>(i + 1, to) - std::max<double>(i, from);
                s.m_weights.push_back(static_cast<float>(cover / ratio));
            }
            span.count = last - span.first;
        } else {
            // Enlarging: a blend of the two source pixels around the target pixel's centre.
            const double centre = std::clamp((t + 0.5) * ratio - 0.5, 0.0, double(sourceSize - 1));
            span.first = static_cast<std::uint32_t>(centre);
            const double frac = centre - span.first;
            if (span.first + 1 < sourceSize && frac > 0) {
                s.m_weights.push_back(static_cast<float>(1 - frac));
                s.m_weights.push_back(static_cast<float>(frac));
                span.count = 2;
            } else {
                s.m_weights.push_back(1.0f);
                span.count = 1;
            }
        }
    }
    return s;
}

void RowToRgb(const ivImage2d& image, std::uint32_t y, std::uint8_t* out) {
    const std::uint8_t* row = image.Row(y);
    const auto& palette = image.Palette();
    auto fromPalette = [&](std::uint32_t x, std::uint32_t index) {
        const std::uint32_t c = index < palette.size() ? palette[index] : (index ? 0xFFFFFFFFu : 0xFF000000u);
        out[3 * x] = static_cast<std::uint8_t>(c);
        out[3 * x + 1] = static_cast<std::uint8_t>(c >> 8);
        out[3 * x + 2] = static_cast<std::uint8_t>(c >> 16);
    };
    const std::uint32_t w = image.Width();
    switch (image.PixelFormat()) {
        case ivImage2d::kGray8:
            for (std::uint32_t x = 0; x < w; ++x) out[3 * x] = out[3 * x + 1] = out[3 * x + 2] = row[x];
            break;
        case ivImage2d::kIndexed8:
            for (std::uint32_t x = 0; x < w; ++x) fromPalette(x, row[x]);
            break;
        case ivImage2d::kBgr24:
            for (std::uint32_t x = 0; x < w; ++x) {
                out[3 * x] = row[3 * x + 2];
                out[3 * x + 1] = row[3 * x + 1];
                out[3 * x + 2] = row[3 * x];
            }
            break;
        case ivImage2d::kCmyk32:
            for (std::uint32_t x = 0; x < w; ++x) {
                const std::uint8_t* p = row + 4 * x;
                out[3 * x] = CmykToRgbComponent(p[0], p[3]);
                out[3 * x + 1] = CmykToRgbComponent(p[1], p[3]);
                out[3 * x + 2] = CmykToRgbComponent(p[2], p[3]);
            }
            break;
        case ivImage2d::kIndexed1:
        case ivImage2d::kIndexed4: {
            const int bits = image.BitsPerPixel();
            const int perByte = 8 / bits;
            const unsigned mask = (1u << bits) - 1;
            for (std::uint32_t x = 0; x < w; ++x) {
                const int shift = 8 - bits * (1 + static_cast<int>(x % perByte));
                fromPalette(x, (row[x / perByte] >> shift) & mask);
            }
            break;
        }
    }
}

void RenderScaledRows(const ivImage2d& image, const ivImageScale& sx, const ivImageScale& sy, std::uint32_t y0,
                      std::uint32_t y1, std::uint32_t x0, std::uint32_t x1, std::uint8_t* out, std::size_t stride) {
    const std::uint32_t width = image.Width();
    std::vector<std::uint8_t> source(std::size_t(width) * 3);
    std::vector<float> accumulated(std::size_t(width) * 3);
    for (std::uint32_t ty = y0; ty < y1 && ty < sy.TargetSize(); ++ty) {
        // Source rows blended vertically, then source columns per target column.
        const ivImageScale::Span& vs = sy.At(ty);
        std::fill(accumulated.begin(), accumulated.end(), 0.0f);
        const float* vw = sy.Weights(vs);
        for (std::uint32_t i = 0; i < vs.count; ++i) {
            RowToRgb(image, vs.first + i, source.data());
            for (std::size_t k = 0; k < source.size(); ++k) accumulated[k] += vw[i] * source[k];
        }
        std::uint8_t* row = out + std::size_t(ty - y0) * stride;
        for (std::uint32_t tx = x0; tx < x1 && tx < sx.TargetSize(); ++tx) {
            const ivImageScale::Span& hs = sx.At(tx);
            const float* hw = sx.Weights(hs);
            float rgb[3] = {0, 0, 0};
            for (std::uint32_t i = 0; i < hs.count; ++i)
                for (int c = 0; c < 3; ++c) rgb[c] += hw[i] * accumulated[3 * (hs.first + i) + c];
            for (int c = 0; c < 3; ++c)
                row[3 * (tx - x0) + c] = static_cast<std::uint8_t>(std::clamp(rgb[c] + 0.5f, 0.0f, 255.0f));
        }
    }
}
