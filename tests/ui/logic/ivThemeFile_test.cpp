#include "ui/shell/ivThemeFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

TEST(ThemeFile, SectionsPropertiesAndSharedIdentifiers) {
    ivThemeFile t;
    t.Parse(
        "# a theme\n[viewFrame]\nborder = #c0c0c0\n  [mainmenu]  \nbackground-top=#010203\ntext = #ffffff\n"
        "text = #eeeeee\nbogus = 1\nno equals sign\n");
    EXPECT_EQ(t.Get("viewFrame", 202), "#c0c0c0");
    EXPECT_EQ(t.Get("mainmenu", 8), "#010203");    // "background-top" asks for 8, as "background" does
    EXPECT_EQ(t.Get("mainmenu", 240), "#eeeeee");  // the last one given
    EXPECT_EQ(t.Get("viewFrame", 240), std::nullopt);
    EXPECT_EQ(t.Size(), 3u);
    EXPECT_EQ(ThemePropertyId("srcBottom"), 14);
    EXPECT_EQ(ThemePropertyId("Background"), -1);  // names are exact
}

TEST(ThemeFile, ShippedThemesGiveTheColoursThePainterAsksFor) {
    for (const char* name : {"white", "dark"}) {
        std::ifstream in(std::string(VANTREL_RESOURCES) + "/themes/" + name + ".thm", std::ios::binary);
        std::ostringstream s;
        s << in.rdbuf();
        ivThemeFile t;
        t.Parse(s.str());
        for (const auto& [section, id] : std::vector<std::pair<const char*, int>>{{"window", 8},
                                                                                  {"window", 240},
                                                                                  {"tree", 8},
                                                                                  {"tree", 240},
                                                                                  {"viewFrame", 202},
                                                                                  {"error", 240}})
            EXPECT_TRUE(t.Get(section, id).has_value()) << name << " " << section << " " << id;
    }
}

}  // namespace
