// The JSON report of every PDF in tests/data is compared with its committed copy in
// tests/golden. After a deliberate change, regenerate them with
//   VANTREL_UPDATE_GOLDENS=1 build/debug/tests/vantrel_tests --gtest_filter='CliGolden*'
// and read the diff before committing.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "cli/cliReport.h"
#include "support/TestSupport.h"

namespace fs = std::filesystem;

namespace {

std::string Slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// One member or element per line, so that a change shows as a readable diff.
std::string Indent(const std::string& json) {
    std::string out;
    int depth = 0;
    bool inString = false;
    auto newline = [&] { out += '\n' + std::string(2 * depth, ' '); };
    for (std::size_t i = 0; i < json.size(); ++i) {
        char c = json[i];
        if (inString) {
            out += c;
            if (c == '\\')
                out += json[++i];
            else if (c == '"')
                inString = false;
            continue;
        }
        switch (c) {
            case '"':
                inString = true;
                out += c;
                break;
            case '{':
            case '[':
                out += c;
                if (i + 1 < json.size() && (json[i + 1] == '}' || json[i + 1] == ']')) {
                    out += json[++i];
                    break;
                }
                ++depth;
                newline();
                break;
            case '}':
            case ']':
                --depth;
                newline();
                out += c;
                break;
            case ',':
                out += c;
                newline();
                break;
            case ':':
                out += ": ";
                break;
            case '\n':
                break;
            default:
                out += c;
        }
    }
    return out + '\n';
}

TEST(CliGolden, JsonReportsMatchTheCommittedOnes) {
    const fs::path data = TestDataPath("");
    const fs::path golden = fs::path(VANTREL_GOLDEN_DIR);
    const bool update = std::getenv("VANTREL_UPDATE_GOLDENS") != nullptr;
    // Encrypted fixtures that need a password would ask on a terminal: give them none, so that
    // they report 0x80060005 as the command line does without one.
#ifdef _WIN32
    ASSERT_NE(std::freopen("NUL", "r", stdin), nullptr);
#else
    ASSERT_NE(std::freopen("/dev/null", "r", stdin), nullptr);
#endif
    CliOptions options;
    options.json = true;
    int compared = 0;
    std::vector<fs::path> pdfs;
    // Files whose report runs to megabytes (a hundred thousand pages) have focused tests instead.
    const std::set<std::string> tooLarge = {"tree-shared-subtrees.pdf"};
    for (const auto& item : fs::directory_iterator(data))
        if (item.path().extension() == ".pdf" && !tooLarge.count(item.path().filename().string()))
            pdfs.push_back(item.path());
    std::sort(pdfs.begin(), pdfs.end());
    for (const fs::path& pdf : pdfs) {
        // Reports name the file as given: run from the data folder so they hold the bare name.
        fs::path previous = fs::current_path();
        fs::current_path(data);
        std::string report = Indent(AnalyseFile(pdf.filename().string(), options).out);
        fs::current_path(previous);
        fs::path expected = golden / (pdf.stem().string() + ".json");
        if (update) {
            std::ofstream(expected, std::ios::binary) << report;
            continue;
        }
        ASSERT_TRUE(fs::exists(expected))
            << "no golden report for " << pdf.filename() << " (see the comment above)";
        EXPECT_EQ(report, Slurp(expected)) << pdf.filename();
        ++compared;
    }
    if (!update) {
        EXPECT_GT(compared, 0);
    }
}

}  // namespace
