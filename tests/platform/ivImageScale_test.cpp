#include "platform/ivImageScale.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

// A gray image whose pixel (x, y) is `value(x, y)`.
template <class Value>
ivImage2d Gray(std::uint32_t w, std::uint32_t h, Value value) {
    ivImage2d image;
    EXPECT_EQ(image.Create(ivImage2d::kGray8, w, h), kOk);
    for (std::uint32_t y = 0; y < h; ++y)
        for (std::uint32_t x = 0; x < w; ++x) image.Row(y)[x] = static_cast<std::uint8_t>(value(x, y));
    return image;
}

std::vector<std::uint8_t> Render(const ivImage2d& image, std::uint32_t w, std::uint32_t h) {
    const ivImageScale sx = ivImageScale::Create(image.Width(), w), sy = ivImageScale::Create(image.Height(), h);
    std::vector<std::uint8_t> out(std::size_t(w) * h * 3);
    RenderScaledRows(image, sx, sy, 0, h, 0, w, out.data(), std::size_t(w) * 3);
    return out;
}

TEST(ImageScale, WeightsCoverEachTargetPixelOnce) {
    for (auto [from, to] : {std::pair{10u, 3u}, {3u, 10u}, {7u, 7u}, {1000u, 1u}}) {
        const ivImageScale s = ivImageScale::Create(from, to);
        ASSERT_EQ(s.TargetSize(), to);
        for (std::uint32_t t = 0; t < to; ++t) {
            const auto& span = s.At(t);
            EXPECT_LE(span.first + span.count, from);
            const float* w = s.Weights(span);
            EXPECT_NEAR(std::accumulate(w, w + span.count, 0.0f), 1.0f, 1e-4) << from << "->" << to << " at " << t;
        }
    }
}

TEST(ImageScale, ShrinkingAveragesAndEnlargingBlends) {
    // Halving a 4 x 2 image averages each 2 x 2 block.
    const ivImage2d image = Gray(4, 2, [](std::uint32_t x, std::uint32_t y) { return x < 2 ? 10 + 20 * y : 200; });
    EXPECT_EQ(Render(image, 2, 1), (std::vector<std::uint8_t>{20, 20, 20, 200, 200, 200}));
    // The same size gives the same pixels.
    EXPECT_EQ(Render(image, 4, 2)[0], 10);
    // Doubling one row of two pixels: the ends keep their value, the middle blends.
    const ivImage2d two = Gray(2, 1, [](std::uint32_t x, std::uint32_t) { return x ? 100 : 0; });
    const auto wide = Render(two, 4, 1);
    EXPECT_EQ(wide[0], 0);
    EXPECT_EQ(wide[3], 25);
    EXPECT_EQ(wide[9], 100);
}

TEST(ImageScale, RowsOfEveryFormatAsRgb) {
    ivImage2d bgr;
    ASSERT_EQ(bgr.Create(ivImage2d::kBgr24, 1, 1), kOk);
    bgr.Row(0)[0] = 1, bgr.Row(0)[1] = 2, bgr.Row(0)[2] = 3;
    std::uint8_t rgb[3];
    RowToRgb(bgr, 0, rgb);
    EXPECT_EQ((std::vector<std::uint8_t>(rgb, rgb + 3)), (std::vector<std::uint8_t>{3, 2, 1}));
    ivImage2d bits;
    ASSERT_EQ(bits.Create(ivImage2d::kIndexed1, 3, 1), kOk);
    bits.Palette() = {0xFF000000u, 0xFFFFFFFFu};
    bits.Row(0)[0] = 0x40;  // 0 1 0
    std::uint8_t three[9];
    RowToRgb(bits, 0, three);
    EXPECT_EQ(three[0], 0);
    EXPECT_EQ(three[3], 255);
    EXPECT_EQ(three[6], 0);
    ivImage2d cmyk;
    ASSERT_EQ(cmyk.Create(ivImage2d::kCmyk32, 1, 1), kOk);
    cmyk.Row(0)[0] = 255, cmyk.Row(0)[1] = 0, cmyk.Row(0)[2] = 0, cmyk.Row(0)[3] = 0;  // cyan
    RowToRgb(cmyk, 0, rgb);
    EXPECT_EQ((std::vector<std::uint8_t>(rgb, rgb + 3)), (std::vector<std::uint8_t>{0, 255, 255}));
}

}  // namespace
