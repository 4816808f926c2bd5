#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "codecs/ExportReaders.h"
#include "platform/ivMemStream.h"

namespace {

constexpr std::uint32_t kWidth = 13, kHeight = 7;  // odd sizes: row padding and partial bytes

std::uint32_t Entry(int r, int g, int b) {
    return std::uint32_t(r) | std::uint32_t(g) << 8 | std::uint32_t(b) << 16 | 0xFF000000u;
}

void SetIndex(ivImage2d& image, std::uint32_t x, std::uint32_t y, std::uint32_t index) {
    const auto bits = static_cast<std::uint32_t>(image.BitsPerPixel());
    const std::uint32_t bit = x * bits, shift = 8 - bits - bit % 8;
    image.Row(y)[bit / 8] = static_cast<std::uint8_t>(image.Row(y)[bit / 8] | index << shift);
}

// A bitmap of each format with colours that change slowly from pixel to pixel (so JPEG's
// loss stays small) and never agree between red and blue (so a swap shows), and the RGB
// a reader should find.
struct Sample {
    const char* name;
    ivImage2d image;
    Bytes rgb;
    int indexBits = 0;  // 0 for the direct formats
};

Sample Indexed(const char* name, ivImage2d::Format format, int bits,
               const std::function<std::uint32_t(std::uint32_t, std::uint32_t)>& index) {
    Sample s{name, {}, {}, bits};
    EXPECT_EQ(s.image.Create(format, kWidth, kHeight, bits), kOk);
    const int entries = 1 << bits;
    for (int i = 0; i < entries; ++i) {
        const int step = 255 * i / (entries - 1);
        s.image.Palette()[static_cast<std::size_t>(i)] = Entry(step, 200 - step * 3 / 4, 255 - step);
    }
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const std::uint32_t i = index(x, y);
            SetIndex(s.image, x, y, i);
            const std::uint32_t e = s.image.Palette()[i];
            s.rgb.insert(s.rgb.end(), {static_cast<std::uint8_t>(e), static_cast<std::uint8_t>(e >> 8),
                                       static_cast<std::uint8_t>(e >> 16)});
        }
    return s;
}

std::vector<Sample> Samples() {
    std::vector<Sample> samples;
    auto direct =
        [&](const char* name, ivImage2d::Format format, int bpp,
            const std::function<void(std::uint32_t, std::uint32_t, std::uint8_t*, std::uint8_t*)>& fill) {
            Sample s{name, {}, {}, 0};
            EXPECT_EQ(s.image.Create(format, kWidth, kHeight), kOk);
            for (std::uint32_t y = 0; y < kHeight; ++y)
                for (std::uint32_t x = 0; x < kWidth; ++x) {
                    std::uint8_t rgb[3];
                    fill(x, y, s.image.Row(y) + x * static_cast<std::uint32_t>(bpp), rgb);
                    s.rgb.insert(s.rgb.end(), rgb, rgb + 3);
                }
            samples.push_back(std::move(s));
        };
    direct("gray", ivImage2d::kGray8, 1,
           [](std::uint32_t x, std::uint32_t y, std::uint8_t* p, std::uint8_t* rgb) {
               p[0] = rgb[0] = rgb[1] = rgb[2] = static_cast<std::uint8_t>(20 + x * 12 + y * 8);
           });
    direct("bgr", ivImage2d::kBgr24, 3,
           [](std::uint32_t x, std::uint32_t y, std::uint8_t* p, std::uint8_t* rgb) {
               rgb[0] = p[2] = static_cast<std::uint8_t>(240 - x * 10);
               rgb[1] = p[1] = static_cast<std::uint8_t>(40 + y * 25);
               rgb[2] = p[0] = static_cast<std::uint8_t>(30 + x * 14);
           });
    direct("cmyk", ivImage2d::kCmyk32, 4,
           [](std::uint32_t x, std::uint32_t y, std::uint8_t* p, std::uint8_t* rgb) {
               p[0] = static_cast<std::uint8_t>(x * 15);
               p[1] = static_cast<std::uint8_t>(60 + y * 20);
               p[2] = static_cast<std::uint8_t>(200 - x * 8);
               p[3] = static_cast<std::uint8_t>(y < 5 ? 10 : 90);  // black large enough to clip some
               for (int c = 0; c < 3; ++c) rgb[c] = CmykToRgbComponent(p[c], p[3]);
           });
    samples.push_back(Indexed("indexed 1", ivImage2d::kIndexed1, 1,
                              [](std::uint32_t x, std::uint32_t) { return x >= 7 ? 1u : 0u; }));
    samples.push_back(
        Indexed("indexed 2", ivImage2d::kIndexed4, 2, [](std::uint32_t x, std::uint32_t) { return x / 4; }));
    samples.push_back(
        Indexed("indexed 4", ivImage2d::kIndexed4, 4, [](std::uint32_t x, std::uint32_t) { return x; }));
    samples.push_back(Indexed("indexed 8", ivImage2d::kIndexed8, 8,
                              [](std::uint32_t x, std::uint32_t y) { return x * 18 + y; }));
    return samples;
}

Bytes Export(ivImageExporter& exporter, const ivImage2d& image, ivStatus* status) {
    ivMemStream file;
    *status = exporter.Save(file, image);
    return file.Data();
}

double MeanDifference(const Bytes& a, const Bytes& b) {
    if (a.size() != b.size() || a.empty()) return 256;
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(int(a[i]) - int(b[i]));
    return sum / static_cast<double>(a.size());
}

TEST(PngExport, RoundTrip) {
    auto exporter = CreateInterface<ivImageExporter>("png");
    if (!exporter) GTEST_SKIP() << "no PNG codec in this build";
    for (const Sample& s : Samples()) {
        ivStatus st = kFail;
        ReadBack r = ReadPng(Export(*exporter, s.image, &st));
        ASSERT_EQ(st, kOk) << s.name;
        ASSERT_TRUE(r.ok) << s.name;
        EXPECT_EQ(r.width, kWidth) << s.name;
        EXPECT_EQ(r.height, kHeight) << s.name;
        EXPECT_EQ(r.rgb, s.rgb) << s.name;
        // Gray stays gray (0), indexed keeps its palette (3) and depth, the rest is RGB (2).
        const bool gray = s.image.PixelFormat() == ivImage2d::kGray8;
        EXPECT_EQ(r.layout, s.indexBits ? 3 : gray ? 0 : 2) << s.name;
        EXPECT_EQ(r.bits, s.indexBits ? s.indexBits : 8) << s.name;
    }
}

TEST(TiffExport, RoundTrip) {
    auto exporter = CreateInterface<ivImageExporter>("tiff");
    if (!exporter) GTEST_SKIP() << "no TIFF codec in this build";
    for (const Sample& s : Samples()) {
        ivStatus st = kFail;
        int compression = 0;
        ReadBack r = ReadTiff(Export(*exporter, s.image, &st), &compression);
        ASSERT_EQ(st, kOk) << s.name;
        ASSERT_TRUE(r.ok) << s.name;
        EXPECT_EQ(r.width, kWidth) << s.name;
        EXPECT_EQ(r.height, kHeight) << s.name;
        EXPECT_EQ(r.rgb, s.rgb) << s.name;
        // Photometric: 1 black is zero, 2 RGB, 3 palette.
        const bool gray = s.image.PixelFormat() == ivImage2d::kGray8;
        EXPECT_EQ(r.layout, s.indexBits ? 3 : gray ? 1 : 2) << s.name;
        EXPECT_EQ(r.bits, s.indexBits ? s.indexBits : 8) << s.name;
        EXPECT_TRUE(compression == 8 || compression == 1) << s.name << ": compression " << compression;
    }
}

TEST(BmpExport, RoundTrip) {
    auto exporter = CreateInterface<ivImageExporter>("bmp");
    ASSERT_NE(exporter, nullptr);  // every build has it
    for (const Sample& s : Samples()) {
        ivStatus st = kFail;
        ReadBack r = ReadBmp(Export(*exporter, s.image, &st));
        ASSERT_EQ(st, kOk) << s.name;
        ASSERT_TRUE(r.ok) << s.name;
        EXPECT_EQ(r.width, kWidth) << s.name;
        EXPECT_EQ(r.height, kHeight) << s.name;
        EXPECT_EQ(r.rgb, s.rgb) << s.name;
        const bool palette = s.indexBits || s.image.PixelFormat() == ivImage2d::kGray8;
        EXPECT_EQ(r.bits, palette ? 8 : 24) << s.name;
    }
}

TEST(JpegExport, RoundTrip) {
    auto exporter = CreateInterface<ivImageExporter>("jpeg");
    if (!exporter) GTEST_SKIP() << "no JPEG codec in this build";
    for (const Sample& s : Samples()) {
        ivStatus st = kFail;
        ReadBack r = ReadJpeg(Export(*exporter, s.image, &st));
        ASSERT_EQ(st, kOk) << s.name;
        ASSERT_TRUE(r.ok) << s.name;
        EXPECT_EQ(r.width, kWidth) << s.name;
        EXPECT_EQ(r.height, kHeight) << s.name;
        // Lossy: close on average. A swapped or inverted channel is off by far more.
        EXPECT_LT(MeanDifference(r.rgb, s.rgb), 4.0) << s.name;
        const bool gray = s.image.PixelFormat() == ivImage2d::kGray8;
        EXPECT_EQ(r.layout, gray ? 2 : 1) << s.name;  // TJCS_GRAY, TJCS_YCbCr
    }
}

// Writes go through until `m_budget` bytes have been taken, then fail.
class FailingStream final : public ivStream {
public:
    explicit FailingStream(std::uint32_t budget) : m_budget(budget) {}
    ivStatus Read(void*, std::uint32_t, std::uint32_t* read) override {
        *read = 0;
        return kRemark;
    }
    ivStatus Write(const void*, std::uint32_t count, std::uint32_t* written) override {
        *written = 0;
        if (count > m_budget) return kFail;
        m_budget -= count;
        m_pos += count;
        m_size = std::max(m_size, m_pos);
        *written = count;
        return kOk;
    }
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override {
        std::int64_t base = origin == ivSeekOrigin::Begin     ? 0
                            : origin == ivSeekOrigin::Current ? std::int64_t(m_pos)
                                                              : std::int64_t(m_size);
        if (base + offset < 0) return kInvalidArg;
        m_pos = static_cast<std::uint64_t>(base + offset);
        return base + offset;
    }
    std::uint64_t Position() const override { return m_pos; }
    std::uint64_t Size() const override { return m_size; }
    ivStatus SetSize(std::uint64_t size) override {
        m_size = size;
        return kOk;
    }

private:
    std::uint32_t m_budget;
    std::uint64_t m_pos = 0, m_size = 0;
};

TEST(CodecExport, FailuresAreReported) {
    const ivImage2d empty;
    const std::vector<Sample> samples = Samples();
    for (const char* id : {"jpeg", "png", "tiff", "bmp"}) {
        auto exporter = CreateInterface<ivImageExporter>(id);
        if (!exporter) continue;
        ivMemStream file;
        EXPECT_TRUE(Failed(exporter->Save(file, empty))) << id;
        // A write error early, in the middle and near the end of each file. For PNG this
        // is libpng's longjmp path.
        for (const Sample& s : samples) {
            ivStatus st = kFail;
            const std::size_t size = Export(*exporter, s.image, &st).size();
            for (std::size_t budget : {std::size_t(0), size / 2, size - 1}) {
                FailingStream failing(static_cast<std::uint32_t>(budget));
                EXPECT_TRUE(Failed(exporter->Save(failing, s.image)))
                    << id << ", " << s.name << ", " << budget;
            }
        }
    }
}

// Past libpng's default width limit of a million pixels, and past JPEG's 65,500.
TEST(CodecExport, VeryWideImage) {
    ivImage2d wide;
    ASSERT_EQ(wide.Create(ivImage2d::kGray8, 1'000'001, 1), kOk);
    const struct {
        const char* id;
        bool writes;
    } cases[] = {{"png", true}, {"tiff", true}, {"bmp", true}, {"jpeg", false}};
    for (const auto& c : cases) {
        auto exporter = CreateInterface<ivImageExporter>(c.id);
        if (!exporter) continue;
        ivMemStream file;
        EXPECT_EQ(Succeeded(exporter->Save(file, wide)), c.writes) << c.id;
    }
}

TEST(CodecFactory, FormatListAgreesWithTheFactory) {
    std::vector<std::string> exporters;
    for (const ivCodecInfo& info : RegisteredCodecs()) {
        ASSERT_NE(FindCodec(info.id), nullptr) << info.id;
        EXPECT_EQ(FindCodec(info.id)->name, info.name) << info.id;
        EXPECT_EQ(CreateInterface<ivImageImporter>(info.id) != nullptr, (info.caps & kCodecImport) != 0)
            << info.id;
        EXPECT_EQ(CreateInterface<ivImageExporter>(info.id) != nullptr, (info.caps & kCodecExport) != 0)
            << info.id;
        if (info.caps & kCodecExport) exporters.emplace_back(info.id);
    }
    // The export formats keep their order, JPEG (the default) first, whichever are built.
    std::vector<std::string> expected;
    for (const char* id : {"jpeg", "png", "tiff", "bmp"})
        if (CreateInterface<ivImageExporter>(id)) expected.emplace_back(id);
    EXPECT_EQ(exporters, expected);
    EXPECT_EQ(CreateInterface<ivImageImporter>("no such codec"), nullptr);
}

}  // namespace
