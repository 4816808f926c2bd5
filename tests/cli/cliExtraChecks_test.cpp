// The --extra-checks switch through the whole command line, and the exit status, which tells
// of the analysis alone.
#include <gtest/gtest.h>

#include <string>

#include "support/CliRun.h"
#include "support/TestSupport.h"

namespace {

TEST(CliExtraChecks, SwitchAddsOurOwnMessagesAndSaysSoInTheReport) {
    ScratchFolder folder("extra-checks");
    const std::string pdf = TestDataPath("tree-listed-twice.pdf");
    const CliOutcome standard = RunCli({"--json", pdf}, folder.Path());
    EXPECT_EQ(standard.exitStatus, 0);
    EXPECT_EQ(standard.MessageCount(), 0);
    EXPECT_NE(standard.out.find("\"extra_checks\":false"), std::string::npos);

    const CliOutcome extra = RunCli({"--extra-checks", "--json", pdf}, folder.Path());
    EXPECT_EQ(extra.exitStatus, 1);
    EXPECT_EQ(extra.MessageCount(), 1);
    EXPECT_NE(extra.out.find("\"extra_checks\":true"), std::string::npos);
    EXPECT_NE(extra.out.find("Page 5 0 R is listed more than once in the page tree"), std::string::npos);
}

TEST(CliExtraChecks, MessagesOfTheExportDoNotChangeTheExitStatus) {
    ScratchFolder folder("export-status");
    const CliOutcome o =
        RunCli({"--json", "--export-images", folder.Path().string(), TestDataPath("img-dct-truncated.pdf")},
               folder.Path());
    EXPECT_EQ(o.exitStatus, 0);
    EXPECT_EQ(o.MessageCount(), 1);  // the JPEG that cannot be decoded, still reported
}

}  // namespace
