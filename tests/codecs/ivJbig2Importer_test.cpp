#include <gtest/gtest.h>

#include <random>

#include "codecs/CodecTestSupport.h"

namespace {

std::unique_ptr<ivImageImporter> Jbig2Importer() {
    return CreateInterface<ivImageImporter>("jbig2");
}

// The bitmap as one byte a pixel, 1 where the palette says black.
Bytes BlackPixels(const ivImage2d& image) {
    Bytes out;
    const std::uint32_t black = image.Palette().at(1);
    for (std::uint32_t y = 0; y < image.Height(); ++y)
        for (std::uint32_t x = 0; x < image.Width(); ++x) {
            const std::uint32_t index = (image.Row(y)[x / 8] >> (7 - x % 8)) & 1;
            out.push_back(image.Palette().at(index) == black ? 1 : 0);
        }
    return out;
}

TEST(Jbig2Import, DecodesPages) {
    if (!Jbig2Importer()) GTEST_SKIP() << "no JBIG2 codec in this build";
    const struct {
        const char* file;
        const char* globals;
        const char* expected;
    } cases[] = {
        {"generic.jb2", nullptr, "generic.pbm"},                // generic region
        {"generic.jb2", "symbols-globals.jb2", "generic.pbm"},  // globals it doesn't use
        {"symbols.jb2", "symbols-globals.jb2", "symbols.pbm"},  // text region over the globals' symbols
    };
    for (const auto& c : cases) {
        auto importer = Jbig2Importer();
        if (c.globals) {
            ASSERT_EQ(importer->SetGlobals(ReadCodecFixture(c.globals)), kOk);
        }
        DecodeResult r = DecodeBytes(*importer, ReadCodecFixture(c.file));
        ASSERT_EQ(r.status, kOk) << c.file << ": " << r.error;
        ASSERT_EQ(r.image.PixelFormat(), ivImage2d::kIndexed1);
        EXPECT_EQ(r.image.Palette().at(0), 0xFFFFFFFFu) << c.file;  // white
        EXPECT_EQ(r.image.Palette().at(1), 0xFF000000u) << c.file;  // black
        std::uint32_t width = 0, height = 0;
        const Bytes expected = ReadPbmPixels(c.expected, &width, &height);
        EXPECT_EQ(r.image.Width(), width) << c.file;
        EXPECT_EQ(r.image.Height(), height) << c.file;
        EXPECT_EQ(BlackPixels(r.image), expected) << c.file;
    }
}

TEST(Jbig2Import, ImporterCanBeReused) {
    auto importer = Jbig2Importer();
    if (!importer) GTEST_SKIP() << "no JBIG2 codec in this build";
    ASSERT_EQ(importer->SetGlobals(ReadCodecFixture("symbols-globals.jb2")), kOk);
    EXPECT_EQ(DecodeBytes(*importer, ReadCodecFixture("symbols.jb2")).status, kOk);
    EXPECT_EQ(DecodeBytes(*importer, ReadCodecFixture("symbols.jb2")).status, kOk);
    // Without the globals the text region names a segment nobody has.
    ASSERT_EQ(importer->SetGlobals({}), kOk);
    DecodeResult r = DecodeBytes(*importer, ReadCodecFixture("symbols.jb2"));
    EXPECT_TRUE(Failed(r.status));
    EXPECT_FALSE(r.error.empty());
}

// A page information segment: number, flags (type 48), no referred-to segments, page 1,
// then its 19 bytes.
Bytes PageInformation(std::uint32_t width, std::uint32_t height) {
    Bytes b = {0, 0, 0, 0, 48, 0, 1, 0, 0, 0, 19};
    for (std::uint32_t v : {width, height, 0u, 0u})
        for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> (24 - 8 * i)));
    b.insert(b.end(), {0, 0, 0});
    return b;
}

TEST(Jbig2Import, DamagedData) {
    if (!Jbig2Importer()) GTEST_SKIP() << "no JBIG2 codec in this build";
    const Bytes generic = ReadCodecFixture("generic.jb2");
    const Bytes region(generic.begin() + 30, generic.end());  // what follows the page information
    auto half = [](const Bytes& b) {
        return Bytes(b.begin(), b.begin() + static_cast<std::ptrdiff_t>(b.size() / 2));
    };
    auto join = [](Bytes a, const Bytes& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    Bytes wideRegion = region;
    wideRegion[11] = 0x01;  // region information after the 11-byte segment header: 40 becomes 16,777,256 wide
    std::mt19937 random(5);
    Bytes noise(2000);
    for (auto& b : noise) b = static_cast<std::uint8_t>(random());
    const struct {
        const char* name;
        Bytes data;
    } cases[] = {
        {"empty", {}},
        {"first half", half(generic)},
        {"cut in a segment header", Bytes(generic.begin(), generic.begin() + 36)},
        {"random bytes", noise},
        {"no page", region},
        {"70000 x 70000 page", join(PageInformation(70000, 70000), region)},
        {"4294967295 pixels wide", join(PageInformation(0xFFFFFFFF, 16), region)},
        {"65535 x 65535 page, region cut short", join(PageInformation(65535, 65535), half(region))},
        {"symbols without their dictionary", ReadCodecFixture("symbols.jb2")},
        {"region wider than the page", join(PageInformation(40, 16), wideRegion)},
    };
    for (const auto& c : cases) {
        auto importer = Jbig2Importer();
        DecodeResult r = DecodeBytes(*importer, c.data);
        EXPECT_TRUE(Failed(r.status)) << c.name << ": " << r.status << ", " << r.error;
        EXPECT_FALSE(r.error.empty()) << c.name;
    }
    // Damaged globals: the page can't be decoded either, and nothing breaks.
    auto importer = Jbig2Importer();
    ASSERT_EQ(importer->SetGlobals(noise), kOk);
    EXPECT_TRUE(Failed(DecodeBytes(*importer, ReadCodecFixture("symbols.jb2")).status));
}

}  // namespace
