// --password: tried once, after the empty password. Without it the command line asks on a
// terminal only; tests/CMakeLists.txt runs it with no terminal (cli.encrypted_no_terminal).
#include <gtest/gtest.h>

#include "cli/cliReport.h"
#include "support/CliRun.h"
#include "support/TestSupport.h"

namespace {

TEST(CliPassword, TriedOnceAfterTheEmptyOne) {
    const struct {
        const char* file;
        const char* password;
        int exitStatus;
        const char* authenticated;
    } cases[] = {
        {"enc-rc4-40-user.pdf", "user", kExitClean, "true"},
        {"enc-rc4-40-user.pdf", "owner", kExitNotOpened, "false"},  // only the user password counts
        {"enc-rc4-40.pdf", "wrong", kExitClean, "true"},            // the empty one opened it: never asked
        // U's tail is not zero: refused with the right password too.
        {"enc-rc4-128-user.pdf", "user", kExitNotOpened, "false"},
        {"enc-rc4-128-user-zero-tail.pdf", "user", kExitClean, "true"},
        // Only 32 bytes of a password count: its first 32 characters open the file.
        {"enc-rc4-40-long-password.pdf", "0123456789abcdefghijklmnopqrstuvwxyzABCD", kExitClean, "true"},
        {"enc-rc4-40-long-password.pdf", "0123456789abcdefghijklmnopqrstuv", kExitClean, "true"},
        {"enc-rc4-40-long-password.pdf", "0123456789abcdefghijklmnopqrstu", kExitNotOpened, "false"},
        // RC4 takes the password in an 8-bit code page, AES-256 in UTF-8.
        {"enc-rc4-40-latin-password.pdf", "p\xC3\xA4ss", kExitClean, "true"},
        {"enc-aes-256-latin-password.pdf", "p\xC3\xA4ss", kExitClean, "true"},
    };
    for (const auto& c : cases) {
        CliOptions options;
        options.json = true;
        options.password = c.password;
        FileOutcome out = AnalyseFile(TestDataPath(c.file), options);
        SCOPED_TRACE(std::string(c.file) + " --password " + c.password);
        EXPECT_EQ(out.exitStatus, c.exitStatus);
        EXPECT_NE(out.out.find(std::string("\"authenticated\":") + c.authenticated), std::string::npos)
            << out.out;
    }
}

// The data goes straight to standard output as it is decoded, so this runs the program itself.
TEST(CliPassword, StreamDataOfAnEncryptedFile) {
    ScratchFolder folder("password-stream");
    const std::string file = TestDataPath("enc-aes-128-user-zero-tail.pdf");
    CliOutcome out = RunCli({"--password", "user", "--stream", "9", "0", file}, folder.Path());
    EXPECT_EQ(out.exitStatus, kExitClean);
    EXPECT_EQ(out.out, ReadTestFile("enc-rc4-40-user.9-0.bin"));

    out = RunCli({"--password", "wrong", "--stream", "9", "0", file}, folder.Path());
    EXPECT_EQ(out.exitStatus, kExitNotOpened);
    EXPECT_EQ(out.out, "");
    EXPECT_NE(out.err.find("could not be opened (0x80060005)"), std::string::npos) << out.err;
}

}  // namespace
