#include "pdf/analysis/pdfImageExport.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "ImageFixture.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivCodec.h"

namespace fs = std::filesystem;

namespace {

using Strings = std::vector<std::string>;
using Files = std::map<std::string, std::string>;  // name -> bytes

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempFolder {
public:
    TempFolder() {
        static std::atomic<int> counter{0};
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        m_path = fs::temp_directory_path() / ("vantrel-" + std::string(test ? test->name() : "export") + "-" +
                                              std::to_string(::getpid()) + "-" + std::to_string(++counter));
        fs::remove_all(m_path);
        fs::create_directories(m_path);
    }
    ~TempFolder() {
        std::error_code ec;
        fs::remove_all(m_path, ec);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    const fs::path& Path() const { return m_path; }

    Files Contents() const {
        Files files;
        for (const auto& item : fs::directory_iterator(m_path)) {
            std::ifstream in(item.path(), std::ios::binary);
            std::ostringstream s;
            s << in.rdbuf();
            files[item.path().filename().string()] = s.str();
        }
        return files;
    }

private:
    fs::path m_path;
};

Strings Names(const Files& files) {
    Strings names;
    for (const auto& [name, bytes] : files) names.push_back(name);
    return names;
}

struct Exported {
    pdfExportOutcome outcome;
    Files files;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> progress;
};

Exported Export(ImageFixture& f, bool keepJpeg, int naming, const std::string& format) {
    TempFolder folder;
    pdfExportSettings settings;
    settings.si_Folder = folder.Path().string();  // without a final separator
    settings.si_keepJpeg = keepJpeg;
    settings.si_name = naming;
    settings.si_format = format;
    Exported run;
    run.outcome = ExportImages(f.Doc(), settings, [&run](std::uint32_t done, std::uint32_t total) {
        run.progress.emplace_back(done, total);
    });
    run.files = folder.Contents();
    return run;
}

// An export format no build has: decoded images then leave no file and no message.
const char* const kNoFormat = "none";

TEST(ExportImages, KeepJpegCopiesCompressedDataUnderObjectIds) {
    ImageFixture f("img-export-mixed.pdf");
    ASSERT_EQ(f.Images().size(), 4u);
    Exported run = Export(f, true, 0, kNoFormat);
    // CCITT data is copied out as well, under the same extension.
    EXPECT_EQ(run.files, (Files{{"12 0.jpg", f.StreamData(12)}, {"13 0.jpg", f.StreamData(13)}}));
    EXPECT_EQ(run.outcome.images, 4u);
    EXPECT_EQ(run.outcome.written, 2u);
    EXPECT_EQ(run.progress, (decltype(run.progress){{1, 4}, {2, 4}, {3, 4}, {4, 4}}));
    EXPECT_EQ(f.TakeMessages(), Strings{f.ImageScope(4) + " > Image Width is not specified"});
}

TEST(ExportImages, IndexNamingCountsImagesThatWroteNothing) {
    ImageFixture f("img-export-mixed.pdf");
    Exported run = Export(f, true, 1, kNoFormat);
    // 3 0 (no exporter) and 4 0 (no width) use up 1 and 2.
    EXPECT_EQ(run.files, (Files{{"3.jpg", f.StreamData(12)}, {"4.jpg", f.StreamData(13)}}));
}

TEST(ExportImages, IndexNamingSkipsImagesThatCannotBeFetched) {
    ImageFixture f("img-export-entry-unreadable.pdf");
    // No file gives an unreadable entry the image role, so the test gives it one, as if an
    // earlier reading had recognised the image there.
    XrefEntry* broken = f.Doc().NewestSection()->Find({4, 0});
    ASSERT_TRUE(broken);
    broken->role = kRoleImage;
    Exported run = Export(f, true, 1, kNoFormat);
    EXPECT_EQ(run.outcome.images, 3u);
    EXPECT_EQ(run.files, (Files{{"1.jpg", f.StreamData(3)}, {"3.jpg", f.StreamData(5)}}));
}

TEST(ExportImages, DocumentWithoutImagesWritesNothing) {
    ImageFixture f("classic-good.pdf");
    Exported run = Export(f, true, 0, "png");
    EXPECT_EQ(run.outcome.images, 0u);
    EXPECT_EQ(run.outcome.written, 0u);
    EXPECT_TRUE(run.progress.empty());
    EXPECT_TRUE(run.files.empty());
}

TEST(ExportImages, DecodedImagesGoThroughTheChosenFilter) {
    const struct {
        const char* id;
        std::string signature;
    } formats[] = {
        {"png", "\x89PNG\r\n\x1A\n"},
        {"bmp", "BM"},
        {"tiff", ""},  // "II*\0" or "MM\0*", checked below
        {"jpeg", "\xFF\xD8"},
    };
    int tried = 0;
    for (const auto& format : formats) {
        if (!CreateInterface<ivImageExporter>(format.id)) continue;
        ++tried;
        const std::string ext(FindCodec(format.id)->extension);
        ImageFixture f("img-export-mixed.pdf");
        {
            // Keep-JPEG off: the DCT image is decoded and written again (without a JPEG importer
            // its compressed bytes are taken as samples), the CCITT one decoded; 4 0 has no
            // width and writes nothing.
            Exported run = Export(f, false, 1, format.id);
            EXPECT_EQ(Names(run.files), (Strings{"1." + ext, "3." + ext, "4." + ext})) << format.id;
            for (const auto& [name, bytes] : run.files) {
                if (format.signature.empty())
                    EXPECT_TRUE(bytes.rfind(std::string("II*\0", 4), 0) == 0 ||
                                bytes.rfind(std::string("MM\0*", 4), 0) == 0)
                        << name;
                else
                    EXPECT_EQ(bytes.substr(0, format.signature.size()), format.signature) << name;
                EXPECT_NE(bytes, f.StreamData(12)) << name;
            }
        }
        {
            // Keep-JPEG on: raw samples still go through the filter.
            Exported run = Export(f, true, 0, format.id);
            EXPECT_EQ(Names(run.files), (Strings{"12 0.jpg", "13 0.jpg", "3 0." + ext})) << format.id;
            EXPECT_EQ(run.files["12 0.jpg"], f.StreamData(12));
        }
    }
    if (tried == 0) GTEST_SKIP() << "this build has no image exporter";
}

}  // namespace
