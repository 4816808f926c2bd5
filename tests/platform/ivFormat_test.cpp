#include "platform/ivFormat.h"

#include <gtest/gtest.h>

TEST(ivFormat, CutsAt260Characters) {
    std::string longText(300, 'x');
    EXPECT_EQ(ivFormat("%s", longText.c_str()).size(), 260u);
    EXPECT_EQ(ivFormat("%d %d R", 12, 0), "12 0 R");
}
