#include "ui/shell/ivCommandTable.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

std::string ProgramTable() {
    std::ifstream in(std::string(VANTREL_RESOURCES) + "/commands.txt", std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::vector<std::string> CommandsOf(const std::vector<ivMenuItem>& items) {
    std::vector<std::string> out;
    for (const ivMenuItem& i : items)
        out.push_back(i.kind == ivMenuItem::Kind::Separator ? "|"
                      : i.kind == ivMenuItem::Kind::Popup   ? i.text
                                                            : i.command);
    return out;
}

TEST(CommandTable, ReadsLinesAndSaysWhatIsWrong) {
    ivCommandTable t;
    EXPECT_TRUE(
        t.Parse("# comment\n\ncommand A.b text=\"500|&Go to...\" hint=\"a hint\" keys=\"Ctrl+R, F5\" "
                "image=\"lib 3\"\n"
                "command A.c text=\"\" group=\"A.mode\" dropdown=\"checked\"\n"
                "menu m = A.b | A.c\npopup &X = A.c\n"));
    ASSERT_EQ(t.Commands().size(), 2u);
    const ivCommandInfo* b = t.Find("a.B");  // names compare without case
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->text, "500|&Go to...");
    EXPECT_EQ(b->DisplayText(), "&Go to...");
    EXPECT_EQ(b->keys, (std::vector<std::string>{"Ctrl+R", "F5"}));
    EXPECT_EQ(b->imageLibrary, "lib");
    EXPECT_EQ(b->imageIndex, 3);
    EXPECT_EQ(t.Find("A.c")->group, "A.mode");
    ASSERT_NE(t.FindMenu("M"), nullptr);
    EXPECT_EQ(CommandsOf(t.FindMenu("m")->items), (std::vector<std::string>{"A.b", "|", "A.c", "&X"}));

    const struct {
        const char* text;
        const char* error;
    } bad[] = {
        {"command A.b text=\"open", "line 1: attributes are written name=\"value\""},
        {"command A.b colour=\"red\"", "line 1: unknown attribute colour"},
        {"\ncommand A.b image=\"lib x\"", "line 2: image takes a library and an index"},
        {"popup &X = A.b", "line 1: popup without a menu before it"},
        {"bogus", "line 1: unknown line"},
    };
    for (const auto& c : bad) {
        ivCommandTable table;
        std::string error;
        EXPECT_FALSE(table.Parse(c.text, &error)) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
    }
}

TEST(CommandTable, DisplayAttributeIsOnlyDigitsBeforeTheBar) {
    ivCommandInfo c;
    for (const auto& [text, shown] : std::vector<std::pair<std::string, std::string>>{
             {"0|&Reload", "&Reload"}, {"E&xit", "E&xit"}, {"a|b", "a|b"}, {"|x", "|x"}, {"", ""}}) {
        c.text = text;
        EXPECT_EQ(c.DisplayText(), shown) << text;
    }
}

// The program's own table: every command and menu it needs, texts as the program shows them.
TEST(CommandTable, ProgramTableHoldsEveryCommandAndMenu) {
    ivCommandTable t;
    std::string error;
    ASSERT_TRUE(t.Parse(ProgramTable(), &error)) << error;
    EXPECT_EQ(t.Commands().size(), 53u);
    EXPECT_EQ(t.Find("file.open")->keys, std::vector<std::string>{"Ctrl+O"});
    EXPECT_EQ(t.Find("File.Reload")->keys, (std::vector<std::string>{"Ctrl+R", "F5"}));
    EXPECT_EQ(t.Find("Help.Keys")->DisplayText(), "Keyboard &Shrorcuts...");  // spelled so
    EXPECT_EQ(t.Find("View.pages")->hint, "Activate  Pages List");            // two blanks
    EXPECT_EQ(t.Find("File.Warning")->imageLibrary, "btn_icons_16");
    EXPECT_EQ(t.Find("View.XML"), nullptr);
    int modes = 0, keyed = 0;
    for (const ivCommandInfo& c : t.Commands()) {
        modes += c.group == "View.mode";
        keyed += !c.keys.empty();
    }
    EXPECT_EQ(modes, 5);  // with "Raw bytes in file"
    EXPECT_EQ(keyed, 9);
    const ivMenuDef* main = t.FindMenu("menu.main");
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(CommandsOf(main->items), (std::vector<std::string>{"&FILE", "&TOOLS", "&HELP"}));
    EXPECT_EQ(CommandsOf(main->items[0].items),
              (std::vector<std::string>{"File.Open", "File.Reload", "File.Close", "|", "File.Recent", "|",
                                        "File.Properties", "|", "File.Exit"}));
    EXPECT_EQ(CommandsOf(t.FindMenu("Context.Object")->items),
              (std::vector<std::string>{"Object.View", "Object.ViewWindow", "|", "File.SaveImageToFile",
                                        "File.SaveStreamToFile", "File.SaveToFile", "|", "Object.Locate",
                                        "Object.LinkTo", "Object.LinkFrom"}));
    for (const char* menu : {"Context.Stream", "Context.Tab", "Context.Page", "Context.Image",
                             "Context.Indirect", "File.Recent", "File.Warning"})
        EXPECT_NE(t.FindMenu(menu), nullptr) << menu;
    // Every item of every menu names a command of the table.
    for (const ivMenuDef& m : t.Menus())
        for (const ivMenuItem& item : m.items) {
            const std::vector<ivMenuItem>& items =
                item.kind == ivMenuItem::Kind::Popup ? item.items : m.items;
            for (const ivMenuItem& i : items) {
                if (i.kind == ivMenuItem::Kind::Command) {
                    EXPECT_NE(t.Find(i.command), nullptr) << i.command;
                }
            }
        }
}

}  // namespace
