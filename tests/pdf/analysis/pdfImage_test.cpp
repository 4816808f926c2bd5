#include "pdf/analysis/pdfImage.h"

#include <gtest/gtest.h>

#include "ImageFixture.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivCodec.h"
#include "platform/ivFormat.h"

namespace {

using Strings = std::vector<std::string>;
using Palette = std::vector<std::uint32_t>;

std::uint32_t Rgb(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return r | g << 8 | b << 16 | 0xFF000000u;
}

const std::uint32_t kBlack = Rgb(0, 0, 0), kWhite = Rgb(255, 255, 255);

// Every row in hexadecimal, padding bytes included, rows separated by blanks.
std::string RowsHex(const ivImage2d& image) {
    std::string out;
    for (std::uint32_t y = 0; y < image.Height(); ++y) {
        if (y) out += ' ';
        for (std::uint32_t x = 0; x < image.Stride(); ++x) out += ivFormat("%02x", image.Row(y)[x]);
    }
    return out;
}

// The grey ramp of a palette with `entries` slots.
Palette Ramp(std::uint32_t entries) {
    Palette p;
    for (std::uint32_t i = 0; i < entries; ++i) {
        const std::uint32_t v = i * 255 / (entries - 1);
        p.push_back(Rgb(v, v, v));
    }
    return p;
}

// The lookup the Indexed fixtures carry: entry i is (i, 255 - i, 37 i), each modulo 256.
Palette FixtureLookup(std::uint32_t entries) {
    Palette p;
    for (std::uint32_t i = 0; i < entries; ++i) p.push_back(Rgb(i & 255, (255 - i) & 255, (i * 37) & 255));
    return p;
}

Palette Padded(Palette p, std::size_t size) {
    p.resize(size, 0);
    return p;
}

struct Decoded {
    ivStatus status;
    std::unique_ptr<ivImage2d> image;
    ivRef<ivStream> passThrough;
    Strings messages;  // with their scopes
};

// Decodes the fixture's only image.
Decoded DecodeOnly(ImageFixture& f, bool passThrough = false) {
    Decoded d{kFail, nullptr, nullptr, {}};
    EXPECT_EQ(f.Images().size(), 1u);
    if (f.Images().size() != 1) return d;
    const pdfObject* object = LoadObject(f.Doc(), f.Images()[0]);
    d.status = DecodeImage(f.Doc(), object, d.image, passThrough ? &d.passThrough : nullptr);
    d.messages = f.TakeMessages();
    return d;
}

std::string ReadAll(ivStream& s) {
    std::string bytes;
    EXPECT_EQ(ivReadAll(s, bytes), kOk);
    return bytes;
}

Strings Scoped(const ImageFixture& f, const Strings& texts) {
    Strings out;
    for (const auto& t : texts)
        out.push_back(f.ImageScope(f.Images().empty() ? 0 : f.Images()[0]->num) + " > " + t);
    return out;
}

// "format/bits per pixel WxH", as the table below writes a bitmap's shape.
std::string Shape(const ivImage2d& image) {
    return ivFormat("%d/%d %ux%u", static_cast<int>(image.PixelFormat()), image.BitsPerPixel(), image.Width(),
                    image.Height());
}

TEST(ImageDecode, RawSamples) {
    const Palette cmykLookup =
        Padded({Rgb(255, 255, 255), Rgb(0, 255, 255), Rgb(205, 195, 185), Rgb(0, 55, 0)}, 256);
    const std::string notFour =
        "An Indexed color space must be defined by a four-element array: [ /Indexed base hival lookup ]";
    const struct {
        const char* fixture;
        const char* shape;
        const char* rows;
        Palette palette;
        Strings messages;
    } cases[] = {
        {"img-gray-1bit.pdf", "16/1 10x2", "a5c00000 5a400000", {kBlack, kWhite}, {}},
        // 8-bit grey needs no palette.
        {"img-gray-8bit.pdf", "1/8 3x2", "007fff00 10203000", {}, {}},
        // 2-bit samples keep 2 bits per pixel, with a four-step ramp.
        {"img-gray-2bit.pdf", "17/2 5x2", "1bc00000 e4400000", Ramp(4), {}},
        {"img-gray-4bit.pdf", "17/4 3x2", "01200000 fed00000", Ramp(16), {}},
        // Stored blue-green-red.
        {"img-rgb-8bit.pdf", "3/24 2x2", "3020106050400000 908070c0b0a00000", {}, {}},
        {"img-cmyk-8bit.pdf", "5/32 2x1", "0102030405060708", {}, {}},
        // Each 16-bit sample keeps its high byte.
        {"img-rgb-16bit.pdf", "3/24 2x1", "9a56128000ff0000", {}, {}},
        // A row longer than the bitmap's row is cut to it.
        {"img-bpc-32.pdf", "3/24 1x1", "03020104", {}, {}},
        {"img-mask.pdf", "16/1 10x1", "a5c00000", {kBlack, kWhite}, {}},
        {"img-indexed-hex-256.pdf", "2/8 4x1", "000180ff", FixtureLookup(256), {}},
        // A literal-string lookup is not read, and says nothing.
        {"img-indexed-literal-lookup.pdf", "2/8 2x1", "00010000", Palette(256, 0), {}},
        // CMYK entries to RGB: 255 - colour - black, 0 where that is 0 or less.
        {"img-indexed-cmyk-lookup-stream.pdf", "2/8 4x1", "00010203", cmykLookup, {}},
        {"img-indexed-hival-300.pdf",
         "2/8 2x1",
         "00ff0000",
         FixtureLookup(256),
         {"Palette size (301)is wrong. Reverted to 256"}},
        // Without a usable colour space an 8-bit image is taken as three components.
        {"img-indexed-three-elements.pdf", "3/24 1x1", "0c0b0a00", {}, {notFour}},
        {"img-colorspace-array-not-indexed.pdf",
         "3/24 1x1",
         "0c0b0a00",
         {},
         {"Indexed color space is expected"}},
    };
    for (const auto& c : cases) {
        ImageFixture f(c.fixture);
        Decoded d = DecodeOnly(f);
        EXPECT_EQ(d.status, kOk) << c.fixture;
        ASSERT_TRUE(d.image) << c.fixture;
        EXPECT_EQ(Shape(*d.image), c.shape) << c.fixture;
        EXPECT_EQ(RowsHex(*d.image), c.rows) << c.fixture;
        EXPECT_EQ(d.image->Palette(), c.palette) << c.fixture;
        EXPECT_EQ(d.messages, Scoped(f, c.messages)) << c.fixture;
    }
}

// Rows are read straight into the bitmap, so the row that ends early keeps the bytes that
// were there; the rows after it stay as created.
TEST(ImageDecode, ShortDataLeavesAPartlyFilledBitmap) {
    ImageFixture f("img-data-short.pdf");
    Decoded d = DecodeOnly(f);
    EXPECT_EQ(d.status, kOk);
    ASSERT_TRUE(d.image);
    EXPECT_EQ(RowsHex(*d.image), "01020304 05060000 00000000");
    EXPECT_EQ(d.messages, Scoped(f, {"Error in reading image"}));
}

TEST(ImageDecode, DictionaryFaultsReportAndFail) {
    const struct {
        const char* fixture;
        Strings messages;
    } cases[] = {
        {"img-width-missing.pdf", {"Image Width is not specified"}},
        {"img-height-missing.pdf", {"Image Height is not specified"}},
        {"img-bpc-missing.pdf", {"Image BPP is not specified"}},
        {"img-colorspace-missing.pdf", {"ColorSpace is not specified"}},
        // 2^30 by 2^30: refused before any memory is asked for.
        {"img-huge.pdf", {"Image of 1073741824 x 1073741824 pixels can't be held in memory"}},
        // Without a height the CCITT data is not decoded; the sample path then fails as well.
        {"img-ccitt-height-missing.pdf",
         {"Image Width or Height was not specified\n", "Image Height is not specified"}},
    };
    for (const auto& c : cases) {
        ImageFixture f(c.fixture);
        Decoded d = DecodeOnly(f);
        // A bitmap that cannot be held is out of memory; every other fault is a wrong type.
        const bool huge = std::string(c.fixture) == "img-huge.pdf";
        EXPECT_EQ(d.status, huge ? kOutOfMemory : kWrongType) << c.fixture;
        EXPECT_EQ(d.messages, Scoped(f, c.messages)) << c.fixture;
    }
}

TEST(ImageDecode, NonDictionaryIsRefused) {
    ImageFixture f("img-indexed-three-elements.pdf");
    ASSERT_EQ(f.Images().size(), 1u);
    const auto* stream = AsStream(LoadObject(f.Doc(), f.Images()[0]));
    ASSERT_TRUE(stream);
    ivImage2d image;
    pdfImageDescription desc;
    EXPECT_EQ(CreateImageFromDictionary(f.Doc(), DictGet(stream->dict, "ColorSpace"), image, desc), kMissing);
    EXPECT_EQ(f.TakeMessages(), Strings{"Dictionary must a be a Dictionary"});
}

TEST(ImageDecode, CcittImage) {
    ImageFixture f("img-ccitt.pdf");
    Decoded d = DecodeOnly(f);
    EXPECT_EQ(d.status, kOk);
    EXPECT_EQ(d.messages, Strings{});
    ASSERT_TRUE(d.image);
    EXPECT_EQ(d.image->PixelFormat(), ivImage2d::kIndexed1);
    ASSERT_EQ(d.image->Width(), 16u);
    ASSERT_EQ(d.image->Height(), 16u);
    // The decoder's own convention (1 bits white) with BlackIs1 false: entry 0 white.
    EXPECT_EQ(d.image->Palette(), (Palette{kBlack, kWhite}));  // white runs are 1 bits
    const std::string bits = ReadTestFile("decode/ccitt-image.bits");
    ASSERT_EQ(bits.size(), 32u);
    for (std::uint32_t y = 0; y < 16; ++y)
        EXPECT_EQ(std::string(d.image->Row(y), d.image->Row(y) + 2), bits.substr(2 * y, 2)) << "row " << y;
}

TEST(ImageDecode, PassThroughReturnsCompressedData) {
    const std::string jpeg = ImageFixture("img-dct.pdf").StreamData(3);
    const std::string ccitt = ImageFixture("img-ccitt.pdf").StreamData(3);
    ASSERT_EQ(jpeg.substr(0, 2), "\xFF\xD8");
    const struct {
        const char* fixture;
        std::string data;
    } cases[] = {
        {"img-dct.pdf", jpeg},
        // Filters before the last one are decoded.
        {"img-dct-flate.pdf", jpeg},
        {"img-ccitt.pdf", ccitt},
        // Not checked for sense: a cut JPEG comes back as it is.
        {"img-dct-truncated.pdf", jpeg.substr(0, 40)},
    };
    for (const auto& c : cases) {
        ImageFixture f(c.fixture);
        Decoded d = DecodeOnly(f, true);
        EXPECT_EQ(d.status, kOk) << c.fixture;
        EXPECT_FALSE(d.image) << c.fixture;
        ASSERT_TRUE(d.passThrough) << c.fixture;
        EXPECT_EQ(ReadAll(*d.passThrough), c.data) << c.fixture;
        EXPECT_EQ(d.messages, Strings{}) << c.fixture;
    }
}

TEST(ImageDecode, PassThroughDecodesRawSamples) {
    ImageFixture f("img-gray-8bit.pdf");
    Decoded d = DecodeOnly(f, true);
    EXPECT_EQ(d.status, kOk);
    EXPECT_FALSE(d.passThrough);
    ASSERT_TRUE(d.image);
    EXPECT_EQ(RowsHex(*d.image), "007fff00 10203000");
}

TEST(ImageDecode, DctThroughTheJpegCodec) {
    if (!CreateInterface<ivImageImporter>("jpeg")) GTEST_SKIP() << "this build has no JPEG importer";
    {
        ImageFixture f("img-dct.pdf");
        Decoded d = DecodeOnly(f);
        EXPECT_EQ(d.status, kOk);
        EXPECT_EQ(d.messages, Strings{});
        ASSERT_TRUE(d.image);
        EXPECT_EQ(d.image->PixelFormat(), ivImage2d::kGray8);
        ASSERT_EQ(d.image->Width(), 16u);
        ASSERT_EQ(d.image->Height(), 8u);
        // Two flat 8x8 blocks, coded at quality 100, decode exactly.
        for (std::uint32_t y = 0; y < 8; ++y)
            EXPECT_EQ(std::string(d.image->Row(y), d.image->Row(y) + 16),
                      std::string(8, '\x40') + std::string(8, '\xC0'))
                << "row " << y;
    }
    {
        // Cut inside the quantisation table: no picture at all.
        ImageFixture f("img-dct-truncated.pdf");
        Decoded d = DecodeOnly(f);
        EXPECT_TRUE(Failed(d.status));
        ASSERT_EQ(d.messages.size(), 1u);
        const std::string prefix = f.ImageScope(3) + " > Image can't be decoded: ";
        EXPECT_EQ(d.messages[0].substr(0, prefix.size()), prefix);
        EXPECT_GT(d.messages[0].size(), prefix.size()) << "the codec's reason is missing";
    }
}

TEST(ImageDecode, DctWithoutJpegCodecReadsTheDataAsSamples) {
    if (CreateInterface<ivImageImporter>("jpeg")) GTEST_SKIP() << "this build has a JPEG importer";
    const std::string missing = "JPEG Import Filter is not implemented yet\n";
    {
        ImageFixture f("img-dct.pdf");
        Decoded d = DecodeOnly(f);
        EXPECT_EQ(d.status, kOk);
        EXPECT_EQ(d.messages, Scoped(f, {missing}));
        ASSERT_TRUE(d.image);
        EXPECT_EQ(d.image->PixelFormat(), ivImage2d::kGray8);
        const std::string jpeg = f.StreamData(3);
        for (std::uint32_t y = 0; y < 8; ++y)
            EXPECT_EQ(std::string(d.image->Row(y), d.image->Row(y) + 16), jpeg.substr(16 * y, 16)) << y;
    }
    {
        ImageFixture f("img-dct-truncated.pdf");
        Decoded d = DecodeOnly(f);
        EXPECT_EQ(d.status, kOk);
        EXPECT_EQ(d.messages, Scoped(f, {missing, "Error in reading image"}));
    }
}

}  // namespace
