#include "cli/cliOptions.h"

#include <gtest/gtest.h>

#include "cli/cliJson.h"

namespace {

CliAction Parse(std::vector<std::string> args, CliOptions* out = nullptr) {
    CliOptions o;
    std::string error;
    CliAction a = ParseCommandLine(args, o, error);
    if (out) *out = o;
    EXPECT_EQ(a == CliAction::UsageError, !error.empty());
    return a;
}

TEST(CliOptions, UsageErrors) {
    const std::vector<std::vector<std::string>> bad = {
        {},                                   // no file
        {"--bogus", "a.pdf"},                 // unknown option
        {"--stream", "1", "a.pdf"},           // generation missing
        {"--stream", "x", "0", "a.pdf"},      // not a number
        {"--stream", "1", "70000", "a.pdf"},  // generation beyond 16 bits
        {"--raw", "a.pdf"},                   // --raw needs --stream
        {"--stream", "1", "0", "a.pdf", "b.pdf"},
        {"-j", "0", "a.pdf"},
        {"-j", "a.pdf"},
        {"--contents", "0", "a.pdf"},  // pages count from 1
        {"--format", "gif", "--export-images", "d", "a.pdf"},
        {"--naming", "index", "a.pdf"},  // export options need --export-images
        {"--password"},                  // value missing
    };
    for (const auto& args : bad)
        EXPECT_EQ(Parse(args), CliAction::UsageError) << ::testing::PrintToString(args);
}

TEST(CliOptions, GoodCommandLines) {
    CliOptions o;
    EXPECT_EQ(Parse({"--json", "-j", "3", "a.pdf", "--quiet", "b.pdf"}, &o), CliAction::Run);
    EXPECT_EQ(o.files, (std::vector<std::string>{"a.pdf", "b.pdf"}));
    EXPECT_TRUE(o.json && o.quiet);
    EXPECT_EQ(o.jobs, 3u);
    EXPECT_EQ(Parse({"--stream", "12", "0", "--raw", "a.pdf"}, &o), CliAction::Run);
    EXPECT_EQ(o.streamNum, 12u);
    EXPECT_TRUE(o.raw);
    EXPECT_EQ(Parse({"-j4", "--", "-odd-name.pdf"}, &o), CliAction::Run);
    EXPECT_EQ(o.files, std::vector<std::string>{"-odd-name.pdf"});
    EXPECT_EQ(Parse({"a.pdf", "--help"}), CliAction::Help);
    EXPECT_EQ(Parse({"--version"}), CliAction::Version);
}

TEST(CliJson, QuotesAndConvertsTexts) {
    EXPECT_EQ(JsonQuote("a\"b\\c\n\x01"), "\"a\\\"b\\\\c\\n\\u0001\"");
    EXPECT_EQ(JsonQuote("caf\xC3\xA9"), "\"caf\xC3\xA9\"");  // valid UTF-8 stays
    EXPECT_EQ(JsonQuote("caf\xE9"), "\"caf\xC3\xA9\"");      // 8-bit text is converted
    EXPECT_EQ(JsonQuote("\x80"), "\"\xE2\x82\xAC\"");        // Windows-1252 euro sign
    JsonWriter w;
    w.BeginObject()
        .Key("a")
        .BeginArray()
        .Number(1)
        .Null()
        .Bool(true)
        .EndArray()
        .Key("b")
        .String("x")
        .EndObject();
    EXPECT_EQ(w.Text(), "{\"a\":[1,null,true],\"b\":\"x\"}");
}

}  // namespace
