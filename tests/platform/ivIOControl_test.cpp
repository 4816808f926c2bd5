#include "platform/ivIOControl.h"

#include <gtest/gtest.h>

#include "platform/ivScope.h"
#include "support/TestSupport.h"

TEST(ivIOControl, MessagesAreFiledUnderTheOpenScopes) {
    RecordingControl ctl;
    {
        ivStdScope outer(&ctl, "Reading XREF table at 1000 (0x3e8h)");
        {
            ivStdScope quiet(&ctl, "never shown");  // no message inside: no node
        }
        ivStdScope inner(&ctl, "Accessing Object 12 0 R");
        ctl.Message("first %d", 1);
        ctl.Message("second");
    }
    ctl.Message("outside");
    EXPECT_EQ(ctl.Paths(),
              (std::vector<std::string>{
                  "Reading XREF table at 1000 (0x3e8h) > Accessing Object 12 0 R > first 1",
                  "Reading XREF table at 1000 (0x3e8h) > Accessing Object 12 0 R > second", "outside"}));
    EXPECT_EQ(ctl.MessageCount(), 3u);
    ctl.ClearMessages();
    EXPECT_EQ(ctl.MessageCount(), 0u);
    EXPECT_TRUE(ctl.Messages().children.empty());
}

TEST(ivIOControl, SameTextInTwoScopesMakesTwoNodes) {
    RecordingControl ctl;
    for (int i = 0; i < 2; ++i) {
        ivStdScope s(&ctl, "Accessing Object 5 0 R");
        ctl.Message("again");
    }
    EXPECT_EQ(ctl.Messages().children.size(), 2u);
}

TEST(ivIOControl, ClearingInsideAScopeStartsAFreshNode) {
    RecordingControl ctl;
    ivStdScope s(&ctl, "scope");
    ctl.Message("before");
    ctl.ClearMessages();
    ctl.Message("after");
    EXPECT_EQ(ctl.Paths(), std::vector<std::string>{"scope > after"});
}

TEST(ivIOControl, LongMessagesAreCut) {
    RecordingControl ctl;
    ctl.AddMessage(std::string(300, 'm'));
    EXPECT_EQ(ctl.Texts().front().size(), 260u);
}
