#include "ui/shell/ivRecentFiles.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using Paths = std::vector<std::string>;

class MapStore : public ivRecentStore {
public:
    std::map<std::string, std::string> values;
    int clears = 0;
    std::optional<std::string> Read(const std::string& name) override {
        auto found = values.find(name);
        if (found == values.end()) return std::nullopt;
        return found->second;
    }
    void Clear() override {
        values.clear();
        ++clears;
    }
    void Write(const std::string& name, const std::string& value) override { values[name] = value; }
};

Paths PathsOf(const ivRecentFiles& list) {
    Paths out;
    for (const auto& e : list.Entries()) out.push_back(e.path);
    return out;
}

TEST(RecentFiles, LoadStopsAtTheFirstGap) {
    MapStore store;
    store.values = {{"0", "a.pdf"}, {"1", "b.pdf"}, {"3", "d.pdf"}};
    ivRecentFiles list;
    list.Load(store);
    EXPECT_EQ(PathsOf(list), (Paths{"a.pdf", "b.pdf"}));
    EXPECT_FALSE(list.Changed());
    // An empty value ends the list too, and a path is read back to 260 characters.
    store.values = {{"0", std::string(300, 'p')}, {"1", ""}, {"2", "c.pdf"}};
    list.Load(store);
    ASSERT_EQ(list.Entries().size(), 1u);
    EXPECT_EQ(list.Entries()[0].path.size(), 260u);
}

TEST(RecentFiles, AddMovesToFrontKeepingTheIdentifier) {
    ivRecentFiles list;
    list.Add("a.pdf");
    list.Add("b.pdf");
    list.Add("c.pdf");
    const int idOfA = list.Entries().back().id;
    list.Add("a.pdf");
    EXPECT_EQ(PathsOf(list), (Paths{"a.pdf", "c.pdf", "b.pdf"}));
    EXPECT_EQ(list.Entries().front().id, idOfA);
    EXPECT_EQ(list.FindById(idOfA)->path, "a.pdf");
    EXPECT_EQ(list.FindById(999), nullptr);
    list.Add("");  // ignored
    EXPECT_EQ(list.Entries().size(), 3u);
}

TEST(RecentFiles, FirstEntryAgainChangesNothing) {
    MapStore store;
    store.values = {{"0", "a.pdf"}};
    ivRecentFiles list;
    list.Load(store);
    list.Add("a.pdf");
    EXPECT_FALSE(list.Changed());
    list.Save(store);
    EXPECT_EQ(store.clears, 0) << "an unchanged list is not written";
}

TEST(RecentFiles, TheTwentyFirstFileDropsTheOldest) {
    MapStore store;
    ivRecentFiles list;
    for (int i = 0; i < 21; ++i) list.Add("f" + std::to_string(i) + ".pdf");
    EXPECT_EQ(list.Entries().size(), 20u);
    EXPECT_EQ(list.Entries().front().path, "f20.pdf");
    EXPECT_EQ(list.Entries().back().path, "f1.pdf");
    list.Save(store);
    EXPECT_EQ(store.values.size(), 20u);
    EXPECT_EQ(store.values["0"], "f20.pdf");
    EXPECT_EQ(store.values["19"], "f1.pdf");
    EXPECT_FALSE(list.Changed());
}

TEST(RecentFiles, CaseMattersToAddButNotToRemove) {
    ivRecentFiles list;
    list.Add("/docs/Report.pdf");
    list.Add("/docs/report.pdf");
    EXPECT_EQ(list.Entries().size(), 2u);
    list.Remove("/DOCS/REPORT.PDF");  // the first match, whatever its case
    EXPECT_EQ(PathsOf(list), (Paths{"/docs/Report.pdf"}));
    list.Remove("other.pdf");
    EXPECT_EQ(list.Entries().size(), 1u);
}

TEST(RecentFiles, SaveRewritesEveryPosition) {
    MapStore store;
    store.values = {{"0", "a.pdf"}, {"1", "b.pdf"}, {"2", "c.pdf"}};
    ivRecentFiles list;
    list.Load(store);
    list.Remove("b.pdf");
    list.Save(store);
    EXPECT_EQ(store.values, (std::map<std::string, std::string>{{"0", "a.pdf"}, {"1", "c.pdf"}}));
}

}  // namespace
