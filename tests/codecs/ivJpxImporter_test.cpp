#include <gtest/gtest.h>

#include <random>

#include "codecs/CodecTestSupport.h"

namespace {

std::unique_ptr<ivImageImporter> JpxImporter() {
    return CreateInterface<ivImageImporter>("jpx");
}

TEST(JpxImport, DecodesEachColourLayout) {
    auto importer = JpxImporter();
    if (!importer) GTEST_SKIP() << "no JPEG 2000 codec in this build";
    const struct {
        const char* file;
        const char* expected;
        ivImage2d::Format format;
        int tolerance;
    } cases[] = {
        {"gray.j2k", "rose.gray", ivImage2d::kGray8, 0},           // raw codestream
        {"rgb.jp2", "rose.rgb", ivImage2d::kBgr24, 0},             // JP2 boxes
        {"rgba.jp2", "rose.rgb", ivImage2d::kBgr24, 0},            // sRGB with alpha: alpha dropped
        {"cmyk.j2k", "rose.cmyk", ivImage2d::kCmyk32, 0},          // four components, no colour space
        {"gray12.j2k", "rose.gray", ivImage2d::kGray8, 0},         // 12 bits scaled to 8
        {"sycc420.jp2", "sycc420.jp2.rgb", ivImage2d::kBgr24, 2},  // sYCC, chroma halved both ways
    };
    for (const auto& c : cases) {
        DecodeResult r = DecodeBytes(*importer, ReadCodecFixture(c.file));
        ASSERT_TRUE(Succeeded(r.status)) << c.file << ": " << r.error;
        EXPECT_EQ(r.image.PixelFormat(), c.format) << c.file;
        EXPECT_EQ(r.image.Width(), 32u) << c.file;
        EXPECT_EQ(r.image.Height(), 24u) << c.file;
        const int bpp = c.format == ivImage2d::kGray8 ? 1 : c.format == ivImage2d::kBgr24 ? 3 : 4;
        Bytes pixels = PackedPixels(r.image, bpp);
        if (bpp == 3) SwapRedBlue(pixels);
        EXPECT_LE(MaxDifference(pixels, ReadCodecFixture(c.expected)), c.tolerance) << c.file;
    }
}

// SIZ follows SOC directly: Lsiz, Rsiz, then Xsiz, Ysiz, XOsiz, YOsiz, XTsiz, YTsiz.
Bytes WithImageSize(Bytes codestream, std::size_t siz, std::uint32_t width, std::uint32_t height) {
    auto put = [&](std::size_t at, std::uint32_t v) {
        for (int i = 0; i < 4; ++i)
            codestream[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(v >> (24 - 8 * i));
    };
    put(siz + 6, width);
    put(siz + 10, height);
    put(siz + 22, width);  // one tile, so only the image size is out of bounds
    put(siz + 26, height);
    return codestream;
}

TEST(JpxImport, DamagedData) {
    auto importer = JpxImporter();
    if (!importer) GTEST_SKIP() << "no JPEG 2000 codec in this build";
    const Bytes j2k = ReadCodecFixture("gray.j2k"), jp2 = ReadCodecFixture("rgb.jp2");
    auto half = [](const Bytes& b) {
        return Bytes(b.begin(), b.begin() + static_cast<std::ptrdiff_t>(b.size() / 2));
    };
    std::mt19937 random(11);
    Bytes noise(3000);
    for (auto& b : noise) b = static_cast<std::uint8_t>(random());
    Bytes noiseAfterSiz = noise;
    std::copy(j2k.begin(), j2k.begin() + 60, noiseAfterSiz.begin());
    const Bytes huge = WithImageSize(j2k, 2, 65535, 65535);
    const struct {
        const char* name;
        Bytes data;
    } cases[] = {
        {"empty", {}},
        {"codestream, first half", half(j2k)},
        {"JP2, first half", half(jp2)},
        {"JP2, signature box only", Bytes(jp2.begin(), jp2.begin() + 12)},
        {"random bytes", noise},
        {"random bytes after a real main header start", noiseAfterSiz},
        {"65535 x 65535", huge},
        {"65535 x 65535, first half", half(huge)},
        {"zero width", WithImageSize(j2k, 2, 0, 24)},
    };
    for (const auto& c : cases) {
        DecodeResult r = DecodeBytes(*importer, c.data);
        EXPECT_TRUE(Failed(r.status)) << c.name << ": " << r.status << ", " << r.error;
        EXPECT_FALSE(r.error.empty()) << c.name;
    }
}

}  // namespace
