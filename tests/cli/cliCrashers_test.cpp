// The minimised findings of the fuzz targets, kept as files in tests/data/crashers (see the
// README there), each run through the command line the way a user would meet it, with the
// extra checks on. A finding stays fixed when the run ends in time within memory, without a
// sanitizer report, with the contract's exit status (which the export's messages leave alone)
// and with a bounded number of messages (a flood of repeats is itself a finding).
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include "support/CliRun.h"
#include "support/TestSupport.h"

namespace fs = std::filesystem;

namespace {

struct Crasher {
    const char* file;  // under tests/data/crashers
    int exitStatus;
    int maxMessages;  // at least one is always expected
};

const Crasher kCrashers[] = {
    // fuzz_images: a grey image with BitsPerComponent 0 made a grey palette of one entry and
    // divided by zero (a NaN converted to a byte), and said nothing about the depth.
    {"image-gray-bpc-0.pdf", 0, 20},
    // fuzz_whole: a page tree whose subtrees are shared lists a node whose entry points at
    // another object; every one of the 90,000 visits read the object again and reported
    // "Object Misaligned" again (a 1 KB file, a 25 MB report; ten such kids make 900,000).
    {"shared-subtree-misaligned-leaf.pdf", 1, 100},
    // fuzz_images: a JBIG2 text region of 9 coded bytes claiming 271 million instances kept
    // jbig2dec decoding for 44 seconds (100 under the sanitizers).
    {"jbig2-text-region-instances.pdf", 0, 5},
    // fuzz_images: a symbol dictionary in 13 coded bytes whose symbols grow to hundreds of
    // megapixels; jbig2dec decoded them for 24 seconds until one could not be allocated.
    {"jbig2-symbol-sizes.pdf", 0, 5},
    // fuzz_whole, the same fault found through a whole file (before the bound was in place).
    {"jbig2-symbol-sizes-whole.pdf", 0, 5},
};

void PrintTo(const Crasher& c, std::ostream* os) {
    *os << c.file;
}

class FuzzCrasher : public ::testing::TestWithParam<Crasher> {};

TEST_P(FuzzCrasher, ReportsWithinBoundsAndTheContractsStatus) {
    const Crasher& c = GetParam();
    const std::string name = fs::path(c.file).stem().string();
    ScratchFolder folder("crasher-" + name);
    fs::create_directories(folder.Path() / "images");
    const CliLimits limits = DefaultCliLimits();
    const CliOutcome o =
        RunCli({"--extra-checks", "--json", "--export-images", (folder.Path() / "images").string(),
                TestDataPath(std::string("crashers/") + c.file)},
               folder.Path(), limits);

    EXPECT_EQ(o.killedFor, "") << "stopped for using too much " << o.killedFor;
    EXPECT_EQ(o.signal, 0) << o.err.substr(0, 4000);
    EXPECT_FALSE(o.SanitizerReported()) << o.err.substr(0, 4000);
    EXPECT_LT(o.seconds, limits.seconds);
    EXPECT_LT(o.peakMegabytes, limits.megabytes);
    EXPECT_EQ(o.exitStatus, c.exitStatus) << o.err.substr(0, 2000);
    EXPECT_GE(o.MessageCount(), 1);
    EXPECT_LE(o.MessageCount(), c.maxMessages);
}

INSTANTIATE_TEST_SUITE_P(, FuzzCrasher, ::testing::ValuesIn(kCrashers),
                         [](const ::testing::TestParamInfo<Crasher>& p) {
                             std::string n = fs::path(p.param.file).stem().string();
                             for (char& ch : n)
                                 if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
                             return n;
                         });

// Every fixture in the folder is in the table above.
TEST(FuzzCrashers, EveryFileIsChecked) {
    std::vector<std::string> listed;
    for (const Crasher& c : kCrashers) listed.emplace_back(c.file);
    for (const auto& item : fs::directory_iterator(TestDataPath("crashers")))
        if (item.path().extension() == ".pdf") {
            EXPECT_NE(std::find(listed.begin(), listed.end(), item.path().filename().string()), listed.end())
                << item.path().filename() << " is not in kCrashers";
        }
}

}  // namespace
