#include "platform/ivFormat.h"

#include <gtest/gtest.h>

TEST(ivFormat, CutsAt260Characters) {
    std::string longText(300, 'x');
    EXPECT_EQ(ivFormat("%s", longText.c_str()).size(), 260u);
    EXPECT_EQ(ivFormat("%d %d R", 12, 0), "12 0 R");
}

TEST(ivFormat, SizeTexts) {
    const struct {
        std::uint64_t bytes;
        const char* text;
    } cases[] = {
        {0, "0 bytes"},
        {1023, "1,023 bytes"},
        {1024, "1.00 KB (1,024 bytes)"},
        {12594, "12.3 KB (12,594 bytes)"},
        {1310720, "1.25 MB (1,310,720 bytes)"},
        {1023487, "999 KB (1,023,487 bytes)"},
        {1023488, "0.98 MB (1,023,488 bytes)"},  // would round to 1000 KB: the next unit
        {237500000, "226 MB (237,500,000 bytes)"},
        {5ull << 40, "5.00 TB (5,497,558,138,880 bytes)"},
    };
    for (const auto& c : cases) EXPECT_EQ(FormatSizeEx(c.bytes), c.text) << c.bytes;
}
