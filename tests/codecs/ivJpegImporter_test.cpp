#include <gtest/gtest.h>

#include <random>

#include "codecs/CodecTestSupport.h"

namespace {

std::unique_ptr<ivImageImporter> JpegImporter() {
    return CreateInterface<ivImageImporter>("jpeg");
}

// The offset of a marker segment's first field after the length; 0 when the marker is not there.
std::size_t FindMarker(const Bytes& jpeg, std::uint8_t marker) {
    for (std::size_t i = 2; i + 1 < jpeg.size(); ++i)
        if (jpeg[i] == 0xFF && jpeg[i + 1] == marker) return i + 4;
    return 0;
}

TEST(JpegImport, MatchesImageMagick) {
    auto importer = JpegImporter();
    if (!importer) GTEST_SKIP() << "no JPEG codec in this build";
    const struct {
        const char* file;
        const char* expected;
        ivImage2d::Format format;
    } cases[] = {
        {"gray.jpg", "gray.jpg.gray", ivImage2d::kGray8},
        {"rgb.jpg", "rgb.jpg.rgb", ivImage2d::kBgr24},
        {"progressive.jpg", "progressive.jpg.rgb", ivImage2d::kBgr24},
        {"cmyk-adobe.jpg", "cmyk-adobe.jpg.cmyk", ivImage2d::kCmyk32},  // YCCK, inverted: put right
        {"cmyk-adobe-transform0.jpg", "cmyk-adobe-transform0.jpg.cmyk",
         ivImage2d::kCmyk32},                                                 // CMYK, inverted
        {"cmyk-no-adobe.jpg", "cmyk-no-adobe.jpg.cmyk", ivImage2d::kCmyk32},  // no marker: as stored
    };
    for (const auto& c : cases) {
        DecodeResult r = DecodeBytes(*importer, ReadCodecFixture(c.file));
        ASSERT_EQ(r.status, kOk) << c.file << ": " << r.error;
        EXPECT_EQ(r.image.PixelFormat(), c.format) << c.file;
        EXPECT_EQ(r.image.Width(), 32u) << c.file;
        EXPECT_EQ(r.image.Height(), 24u) << c.file;
        const int bpp = c.format == ivImage2d::kGray8 ? 1 : c.format == ivImage2d::kBgr24 ? 3 : 4;
        Bytes pixels = PackedPixels(r.image, bpp);
        if (bpp == 3) SwapRedBlue(pixels);
        // Both use libjpeg-turbo's default IDCT, but leave room for a build with another.
        EXPECT_LE(MaxDifference(pixels, ReadCodecFixture(c.expected)), 1) << c.file;
    }
}

TEST(JpegImport, DamagedData) {
    auto importer = JpegImporter();
    if (!importer) GTEST_SKIP() << "no JPEG codec in this build";
    const Bytes rgb = ReadCodecFixture("rgb.jpg");
    std::mt19937 random(7);
    Bytes noise(2000);
    for (auto& b : noise) b = static_cast<std::uint8_t>(random());
    Bytes noiseAfterSoi = noise;
    noiseAfterSoi[0] = 0xFF;
    noiseAfterSoi[1] = 0xD8;
    Bytes huge = ReadCodecFixture("gray.jpg");
    const std::size_t sof = FindMarker(huge, 0xC0);
    ASSERT_NE(sof, 0u);
    for (int i = 1; i <= 4; ++i) huge[sof + static_cast<std::size_t>(i)] = 0xFF;  // 65535 x 65535
    const Bytes hugeHalf(huge.begin(), huge.begin() + static_cast<std::ptrdiff_t>(huge.size() / 2));
    Bytes largest = huge;  // 65500 x 65500, the most libjpeg-turbo takes, is over our limit
    for (std::size_t at : {sof + 1, sof + 3}) {
        largest[at] = 0xFF;
        largest[at + 1] = 0xDC;
    }
    const struct {
        const char* name;
        Bytes data;
    } cases[] = {
        {"empty", {}},
        {"SOI only", {0xFF, 0xD8}},
        {"cut in the tables", Bytes(rgb.begin(), rgb.begin() + 100)},
        {"random bytes", noise},
        {"random bytes after SOI", noiseAfterSoi},
        {"65535 x 65535 gray", huge},
        {"65535 x 65535 gray, cut short", hugeHalf},
        {"65500 x 65500 gray", largest},
    };
    for (const auto& c : cases) {
        DecodeResult r = DecodeBytes(*importer, c.data);
        EXPECT_TRUE(Failed(r.status)) << c.name << ": " << r.status << ", " << r.error;
        EXPECT_FALSE(r.error.empty()) << c.name;
    }
}

// libjpeg-turbo decodes a file cut in its scan to the end, fills in what is missing and
// warns; the importer passes that on as success with a remark.
TEST(JpegImport, TruncatedScanIsARemark) {
    auto importer = JpegImporter();
    if (!importer) GTEST_SKIP() << "no JPEG codec in this build";
    const Bytes rgb = ReadCodecFixture("rgb.jpg");
    const std::size_t scan = FindMarker(rgb, 0xDA);
    ASSERT_NE(scan, 0u);
    const std::size_t cut = scan + (rgb.size() - scan) / 2;
    DecodeResult r =
        DecodeBytes(*importer, Bytes(rgb.begin(), rgb.begin() + static_cast<std::ptrdiff_t>(cut)));
    EXPECT_EQ(r.status, kRemark);
    EXPECT_FALSE(r.error.empty());
    Bytes top = PackedPixels(r.image, 3);
    SwapRedBlue(top);
    const Bytes expected = ReadCodecFixture("rgb.jpg.rgb");
    // The first MCU row (16 lines with 4:2:0) came before the cut.
    top.resize(32 * 3 * 8);
    EXPECT_LE(MaxDifference(top, Bytes(expected.begin(), expected.begin() + 32 * 3 * 8)), 1);
}

}  // namespace
