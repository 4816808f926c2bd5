#include "ui/shell/ivCommandLine.h"

#include <gtest/gtest.h>

namespace {

using Tokens = std::vector<std::string>;

TEST(CommandLine, SplitsAsTheShellWrites) {
    const struct {
        const char* line;
        Tokens tokens;
    } cases[] = {
        {"vantrel.exe a.pdf", {"vantrel.exe", "a.pdf"}},
        {"\"C:\\Program Files\\vantrel.exe\"\t \"my file.pdf\" b.pdf",
         {"C:\\Program Files\\vantrel.exe", "my file.pdf", "b.pdf"}},
        {"v \"unterminated quote", {"v", "unterminated quote"}},  // runs to the end
        {"v \"\" after", {"v", "", "after"}},                     // an empty quoted token
        {"   ", {}},
    };
    for (const auto& c : cases) EXPECT_EQ(SplitCommandLine(c.line), c.tokens) << c.line;
}

TEST(CommandLine, LastPathWinsAndOnlyScanIsAnOption) {
    const std::string longToken(1024, 'x');
    const struct {
        Tokens tokens;
        bool slashOptions;
        std::string path;
        bool scan;
    } cases[] = {
        {{}, false, "", false},
        {{"-scan"}, false, "", true},  // like an empty command line, the flag aside
        {{"/SCAN"}, true, "", true},
        {{"/scan"}, false, "", true},
        {{"my file.pdf", "b.pdf"}, false, "b.pdf", false},  // the last path wins
        {{"-x", "/unknown", "a.pdf"}, true, "a.pdf", false},
        {{"/home/user/a.pdf"}, false, "/home/user/a.pdf", false},  // an absolute path, not an option
        {{"/home/user/a.pdf"}, true, "", false},                   // an option where "/" marks them
        {{"a.pdf", "", "b.pdf"}, false, "a.pdf", false},           // an empty token ends the scan
        {{"a.pdf", longToken, "b.pdf"}, false, "a.pdf", false},    // so does one of 1024 characters
        {{std::string(1023, 'y')}, false, std::string(1023, 'y'), false},
        {{"--grab=x.png", "a.pdf"}, false, "a.pdf", false},
    };
    for (const auto& c : cases) {
        const ivCommandLine cl = ScanCommandLine(c.tokens, c.slashOptions);
        EXPECT_EQ(cl.path, c.path) << ::testing::PrintToString(c.tokens).substr(0, 80);
        EXPECT_EQ(cl.scan, c.scan) << ::testing::PrintToString(c.tokens).substr(0, 80);
    }
}

}  // namespace
