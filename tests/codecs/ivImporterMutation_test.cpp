#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "codecs/CodecTestSupport.h"

namespace {

// Damaged copies of good files: a few bytes changed, or the end cut off somewhere. Nothing
// is expected of the result except that it comes back, with an image whose size matches
// its pixels when the importer says it succeeded.
TEST(CodecImport, SurvivesMutatedFiles) {
    const struct {
        const char* id;
        const char* file;
        const char* globals;
    } cases[] = {
        {"jpeg", "rgb.jpg", nullptr},        {"jpeg", "progressive.jpg", nullptr},
        {"jpeg", "cmyk-adobe.jpg", nullptr}, {"jpx", "rgb.jp2", nullptr},
        {"jpx", "sycc420.jp2", nullptr},     {"jpx", "cmyk.j2k", nullptr},
        {"jbig2", "generic.jb2", nullptr},   {"jbig2", "symbols.jb2", "symbols-globals.jb2"},
    };
    const int rounds =
        std::getenv("VANTREL_MUTATION_ROUNDS") ? std::atoi(std::getenv("VANTREL_MUTATION_ROUNDS")) : 100;
    std::mt19937 random(2024);
    int tried = 0;
    for (const auto& c : cases) {
        auto importer = CreateInterface<ivImageImporter>(c.id);
        if (!importer) continue;
        if (c.globals) {
            ASSERT_EQ(importer->SetGlobals(ReadCodecFixture(c.globals)), kOk);
        }
        const Bytes original = ReadCodecFixture(c.file);
        for (int round = 0; round < rounds; ++round) {
            Bytes data = original;
            if (round % 4 == 3) {
                data.resize(random() % data.size());
            } else {
                for (int n = 1 + static_cast<int>(random() % 4); n > 0; --n)
                    data[random() % data.size()] = static_cast<std::uint8_t>(random());
            }
            DecodeResult r = DecodeBytes(*importer, data);
            if (Succeeded(r.status)) {
                EXPECT_GT(r.image.Width(), 0u) << c.file << ", round " << round;
                EXPECT_EQ(r.image.Pixels().size(), std::size_t(r.image.Stride()) * r.image.Height())
                    << c.file;
            }
            ++tried;
        }
    }
    if (tried == 0) GTEST_SKIP() << "no importer in this build";
}

}  // namespace
