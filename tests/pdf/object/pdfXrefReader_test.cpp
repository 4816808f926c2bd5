#include "pdf/object/pdfXrefReader.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

#include "OpenedFixture.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFormat.h"

namespace {

using Strings = std::vector<std::string>;
using Ids = std::vector<ObjId>;

// The entries a section should hold, each at the offset where the file has "N G obj".
Strings InFile(const OpenedFixture& f, const Ids& ids) {
    Strings out;
    for (ObjId id : ids) out.push_back(f.InFile(id.num, id.gen));
    return out;
}

Strings Under(const std::string& scope, const Strings& texts) {
    Strings out;
    for (const auto& t : texts) out.push_back(scope + " > " + t);
    return out;
}

TEST(XrefHeader, StatusVersionAndMessage) {
    const struct {
        const char* file;
        ivStatus status;
        int major, minor;
        Strings messages;
    } cases[] = {
        {"classic-good.pdf", kOk, 1, 4, {}},
        {"xrefstream-good.pdf", kOk, 1, 7, {}},
        {"header-version-2-0.pdf", kOk, 2, 0, {}},
        // Only byte 0 counts.
        {"header-blank-line.pdf", kNotFound, 0, 0, {"Not a PDF file - can't find the PDF header"}},
        {"header-version-missing.pdf", kNotFound, 0, 0, {}},  // "%PDF-x": silent
        {"header-too-short.pdf", kNotFound, 0, 0, {}},        // "%PDF-" and nothing more
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        EXPECT_EQ(f.OpenStatus(), c.status) << c.file;
        EXPECT_EQ(f.Doc().VersionMajor(), c.major) << c.file;
        EXPECT_EQ(f.Doc().VersionMinor(), c.minor) << c.file;
        EXPECT_EQ(f.Control().Texts(), c.messages) << c.file;
        if (Failed(c.status)) {
            EXPECT_TRUE(f.Doc().Sections().empty()) << c.file;
        }
    }
}

TEST(XrefStartxref, FindsTheNewestSection) {
    const std::string unexpected =
        "Unexpected character - <. XREF table must begin with 'xref' or object id.";
    const struct {
        const char* file;
        ivStatus status;
        const char* sectionLine;  // the line the newest section starts at; null: `offset`
        std::uint32_t offset;
        Ids entries;
        Strings messages;  // "> text" for a text under the newest section's scope
    } cases[] = {
        {"startxref-twice.pdf", kOk, "xref", 0, {{1, 0}}, {}},  // the later keyword wins
        {"startxref-missing.pdf", kOk, nullptr, 0, {}, {}},     // deliberately silent, nothing read
        {"startxref-offset-unreadable.pdf", kFail, nullptr, 0, {}, {"Can't get XRef table position"}},
        {"startxref-beyond-eof.pdf", kOk, nullptr, 99999, {}, {}},  // nothing there to read
        {"section-starts-with-dict.pdf", kOk, "<< /Size", 0, {}, {"> " + unexpected}},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        EXPECT_EQ(f.OpenStatus(), c.status) << c.file;
        ASSERT_EQ(f.Doc().Sections().size(), 1u) << c.file;
        const XrefSection& s = *f.Doc().NewestSection();
        std::uint32_t offset = c.sectionLine ? f.LineOffset(c.sectionLine) : c.offset;
        EXPECT_EQ(s.offset, offset) << c.file;
        EXPECT_EQ(Describe(s), InFile(f, c.entries)) << c.file;
        Strings expected, got;
        for (const auto& m : c.messages) expected.push_back(m[0] == '>' ? SectionScope(offset) + " " + m : m);
        for (const auto& p : f.Control().Paths()) got.push_back(WithoutPosition(p));
        EXPECT_EQ(got, expected) << c.file;
    }
}

TEST(XrefClassic, EntriesAndMessages) {
    const std::string afre =
        "W, Index, Filter, DecodeParms entries are afre for XREF stream only";  // spelled so
    const struct {
        const char* file;
        Ids entries;
        Strings messages;  // under the section's scope
    } cases[] = {
        {"classic-good.pdf", {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}}, {}},
        // "f" lines store nothing; the subsection "3 2" numbers from 3.
        {"xref-free-entries.pdf", {{1, 0}, {2, 0}, {4, 0}}, {}},
        {"xref-entry-type-x.pdf", {{1, 0}, {2, 0}, {4, 0}}, {"Error Reading XREF table"}},
        {"trailer-stream-keys.pdf", {{1, 0}}, {afre}},
        {"trailer-unknown-key.pdf", {{1, 0}}, {"Foo is unknown trailer entry "}},
        {"trailer-key-not-name.pdf", {{1, 0}}, {"Invalid trailer entry "}},
        {"trailer-not-dictionary.pdf", {{1, 0}}, {}},  // ignored without a message
        {"xref-hybrid-xrefstm.pdf", {{1, 0}, {2, 0}, {3, 0}, {4, 0}}, {}},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        EXPECT_EQ(f.OpenStatus(), kOk) << c.file;
        ASSERT_EQ(f.Doc().Sections().size(), 1u) << c.file;
        EXPECT_EQ(f.Doc().NewestSection()->offset, f.LineOffset("xref")) << c.file;
        EXPECT_EQ(Describe(*f.Doc().NewestSection()), InFile(f, c.entries)) << c.file;
        EXPECT_EQ(f.SectionMessages(), Under(SectionScope(f.LineOffset("xref")), c.messages)) << c.file;
    }
}

TEST(XrefClassic, TrailerValues) {
    OpenedFixture good("classic-good.pdf");
    const XrefSection& s = *good.Doc().NewestSection();
    EXPECT_EQ(s.size, 7u);
    EXPECT_EQ(s.prev, 0u);
    EXPECT_EQ(s.xrefStm, 0u);
    EXPECT_EQ(s.xrefStream, nullptr);
    EXPECT_EQ(s.root.Id(), (ObjId{1, 0}));
    EXPECT_EQ(s.info.Id(), (ObjId{6, 0}));
    EXPECT_TRUE(s.encrypt.Empty());
    ASSERT_NE(AsArray(s.id.obj), nullptr);  // a direct value keeps its record
    EXPECT_EQ(AsArray(s.id.obj)->count, 2u);

    // The pair after a key that is no name is still taken.
    EXPECT_EQ(OpenedFixture("trailer-key-not-name.pdf").Doc().NewestSection()->root.Id(), (ObjId{1, 0}));
    EXPECT_TRUE(OpenedFixture("trailer-not-dictionary.pdf").Doc().NewestSection()->root.Empty());

    // XRefStm is recorded, not followed: what only the stream lists stays unknown.
    OpenedFixture hybrid("xref-hybrid-xrefstm.pdf");
    EXPECT_EQ(hybrid.Doc().NewestSection()->xrefStm, hybrid.OffsetOf(4, 0));
    EXPECT_EQ(hybrid.Doc().Sections().size(), 1u);
    EXPECT_EQ(FindEntry(hybrid.Doc(), {5, 0}), nullptr);
}

TEST(XrefClassic, CountBeyondTheDataEndsWithTheData) {
    OpenedFixture f("xref-count-beyond-data.pdf");
    EXPECT_EQ(f.OpenStatus(), kOk);
    EXPECT_EQ(Describe(*f.Doc().NewestSection()), InFile(f, {{1, 0}, {2, 0}}));
    // The trailer's tokens were read as table lines, so no trailer was found.
    EXPECT_TRUE(f.Doc().NewestSection()->root.Empty());
    Strings messages = f.SectionMessages();
    EXPECT_LT(messages.size(), 10u);
    for (const auto& m : messages)
        EXPECT_EQ(m, SectionScope(f.LineOffset("xref")) + " > Error Reading XREF table");
}

TEST(XrefStream, EntriesAndMessages) {
    const Ids all = {{1, 0}, {2, 0}, {3, 0}, {4, 2}, {5, 0}};
    const Ids noTwo = {{1, 0}, {3, 0}, {4, 2}, {5, 0}}, noFour = {{1, 0}, {2, 0}, {3, 0}, {5, 0}};
    const struct {
        const char* file;
        Ids entries;
        Strings messages;  // under the section's scope
    } cases[] = {
        {"xrefstream-good.pdf", all, {}},
        {"xrefstream-flate.pdf", all, {}},
        {"xrefstream-flate-up.pdf", all, {}},         // Flate with PNG Up rows
        {"xrefstream-index.pdf", noTwo, {}},          // Index [0 2 3 3]
        {"xrefstream-index-odd.pdf", noTwo, {}},      // a trailing odd element is ignored
        {"xrefstream-type-width-zero.pdf", all, {}},  // W [0 2 1]: every row is type 1
        {"xrefstream-entry-type-3.pdf", noFour, {"Invalid XREF entry type for object 4"}},
        {"xrefstream-width-above-4.pdf", {}, {"W [1 8 1] is not supported"}},
        {"xrefstream-size-beyond-data.pdf", all, {"Error reading XREF stream"}},
        {"xrefstream-index-count-beyond-data.pdf", all, {"Error reading XREF stream"}},
        {"xrefstream-type-missing.pdf", all, {"Error Reading XREF Object 01"}},
        {"xrefstream-type-wrong.pdf", all, {"Not and XRef object"}},  // spelled so
        {"xrefstream-obj-keyword-missing.pdf", {}, {"'obj' is expected"}},
        // Size is read for the trailer and again for the rows; without it no row is read.
        {"xrefstream-size-not-number.pdf", {}, {"Number is Expected", "Number is Expected"}},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        EXPECT_EQ(f.OpenStatus(), kOk) << c.file;  // the newest section's result is not passed on
        ASSERT_EQ(f.Doc().Sections().size(), 1u) << c.file;
        std::uint32_t offset = f.LineOffset("5 0 ob");
        EXPECT_EQ(f.Doc().NewestSection()->offset, offset) << c.file;
        EXPECT_EQ(Describe(*f.Doc().NewestSection()), InFile(f, c.entries)) << c.file;
        EXPECT_EQ(f.SectionMessages(), Under(SectionScope(offset), c.messages)) << c.file;
    }
}

// Index [1 1 (x) 3]: the element that is no number keeps the previous pair's first number, so
// the rows written for 3, 4 and 5 are read as 1, 2 and 3.
TEST(XrefStream, IndexElementNotANumber) {
    OpenedFixture f("xrefstream-index-not-number.pdf");
    auto at = [&](std::uint32_t num, std::uint16_t gen, std::uint32_t realNum, std::uint16_t realGen) {
        return ivFormat("%u %u @%u", num, gen, f.OffsetOf(realNum, realGen));
    };
    EXPECT_EQ(Describe(*f.Doc().NewestSection()),
              (Strings{at(1, 0, 1, 0), at(1, 0, 3, 0), at(2, 2, 4, 2), at(3, 0, 5, 0)}));
    EXPECT_EQ(f.SectionMessages(), Under(SectionScope(f.OffsetOf(5, 0)), {"Number is Expected"}));
}

TEST(XrefStream, TrailerAndOwnEntry) {
    OpenedFixture f("xrefstream-good.pdf");
    const XrefSection& s = *f.Doc().NewestSection();
    EXPECT_EQ(s.size, 6u);
    EXPECT_EQ(s.root.Id(), (ObjId{1, 0}));
    EXPECT_EQ(s.info.Id(), (ObjId{4, 2}));
    EXPECT_NE(AsArray(s.id.obj), nullptr);
    ASSERT_NE(s.xrefStream, nullptr);
    XrefEntry* own = FindEntry(f.Doc(), {5, 0});
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own->role, kRoleXrefStream);
    EXPECT_EQ(own->object, s.xrefStream);  // linked both ways, never read a second time
    EXPECT_EQ(s.xrefStream->entry, own);
    EXPECT_EQ(FindEntryByRecord(f.Doc(), s.xrefStream), own);
    EXPECT_EQ(ResolveRef(f.Doc(), {5, 0}), s.xrefStream);
    EXPECT_TRUE(f.TakeMessages().empty());
}

TEST(XrefChain, IncrementalUpdate) {
    OpenedFixture f("incremental-update.pdf");
    EXPECT_EQ(f.OpenStatus(), kOk);
    const auto& sections = f.Doc().Sections();
    ASSERT_EQ(sections.size(), 2u);
    EXPECT_EQ(sections[0]->offset, f.LineOffset("xref", 1));
    EXPECT_EQ(sections[0]->prev, f.LineOffset("xref", 0));
    EXPECT_EQ(sections[1]->offset, f.LineOffset("xref", 0));
    EXPECT_EQ(Describe(*sections[0]), (Strings{f.InFile(1), f.InFile(4, 0, 1)}));
    EXPECT_EQ(Describe(*sections[1]), InFile(f, {{1, 0}, {2, 0}, {3, 0}, {4, 0}}));
    EXPECT_TRUE(f.Control().Paths().empty());
}

TEST(XrefChain, LoopStopsWithAMessage) {
    const struct {
        const char* file;
        Strings sectionLines;     // where the sections read start, newest first
        const char* loopingLine;  // the section whose Prev leads back
        const char* targetLine;   // the section it leads back to
    } cases[] = {
        {"prev-loop.pdf", {"xref#1", "xref#0"}, "xref#0", "xref#1"},  // newer -> older -> newer
        {"xrefstream-prev-self.pdf", {"2 0 obj#0"}, "2 0 obj#0", "2 0 obj#0"},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        auto at = [&](const std::string& line) {
            auto hash = line.find('#');
            return f.LineOffset(line.substr(0, hash), std::stoi(line.substr(hash + 1)));
        };
        EXPECT_EQ(f.OpenStatus(), kOk) << c.file;
        std::vector<std::uint32_t> offsets, expected;
        for (const auto& s : f.Doc().Sections()) offsets.push_back(s->offset);
        for (const auto& line : c.sectionLines) expected.push_back(at(line));
        EXPECT_EQ(offsets, expected) << c.file;
        EXPECT_EQ(f.SectionMessages(), (Strings{SectionScope(at(c.loopingLine)) + " > XREF table at " +
                                                std::to_string(at(c.targetLine)) + " was already read"}))
            << c.file;
    }
}

TEST(XrefLengths, ObjectsEndAtTheNextObjectOrSection) {
    OpenedFixture good("classic-good.pdf");
    for (std::uint32_t n = 1; n <= 6; ++n) {
        std::uint32_t end = n < 6 ? good.OffsetOf(n + 1, 0) : good.LineOffset("xref");
        EXPECT_EQ(FindEntry(good.Doc(), {n, 0})->length, end - good.OffsetOf(n, 0)) << n;
    }

    OpenedFixture inc("incremental-update.pdf");
    const auto& s = inc.Doc().Sections();
    // The replaced object 4 stops at the older table, its replacement at the newer one.
    EXPECT_EQ(s[1]->Find({4, 0})->length, inc.LineOffset("xref", 0) - inc.OffsetOf(4, 0, 0));
    EXPECT_EQ(s[0]->Find({4, 0})->length, inc.LineOffset("xref", 1) - inc.OffsetOf(4, 0, 1));
    // Object 1 is listed by both sections at one offset: one of them gets the length, the other 0.
    std::uint32_t a = s[0]->Find({1, 0})->length, b = s[1]->Find({1, 0})->length;
    EXPECT_EQ(std::min(a, b), 0u);
    EXPECT_EQ(std::max(a, b), inc.OffsetOf(2, 0) - inc.OffsetOf(1, 0));

    // A cross-reference stream starts where its section starts, so nothing of it is counted.
    OpenedFixture stream("xrefstream-good.pdf");
    EXPECT_EQ(FindEntry(stream.Doc(), {5, 0})->length, 0u);
    EXPECT_EQ(FindEntry(stream.Doc(), {4, 2})->length, stream.OffsetOf(5, 0) - stream.OffsetOf(4, 2));
}

// "N/G: uncompressed; offset = O" or "N/G: compressed; stream = S, index = I", as Describe prints them.
std::map<std::string, std::string> ShowXref(const std::string& text) {
    std::map<std::string, std::string> out;
    std::istringstream in(text);
    std::string line;
    unsigned num, gen, a, b;
    while (std::getline(in, line)) {
        if (std::sscanf(line.c_str(), "%u/%u: uncompressed; offset = %u", &num, &gen, &a) == 3)
            out[ivFormat("%u %u", num, gen)] = ivFormat("%u %u @%u", num, gen, a);
        else if (std::sscanf(line.c_str(), "%u/%u: compressed; stream = %u, index = %u", &num, &gen, &a,
                             &b) == 4)
            out[ivFormat("%u %u", num, gen)] = ivFormat("%u %u in %u#%u", num, gen, a, b);
        else
            ADD_FAILURE() << "unexpected --show-xref line: " << line;
    }
    return out;
}

TEST(XrefQpdf, InUseEntriesMatchShowXref) {
    for (const char* name : {"qpdf-object-streams", "qpdf-linearized", "qpdf-incremental"}) {
        OpenedFixture f(std::string(name) + ".pdf");
        EXPECT_EQ(f.OpenStatus(), kOk) << name;
        std::map<std::string, std::string> expected =
                                               ShowXref(ReadTestFile(std::string(name) + ".show-xref.txt")),
                                           got;
        ASSERT_FALSE(expected.empty()) << name;
        // Every section's entries, the newest one of each id winning.
        for (auto s = f.Doc().Sections().rbegin(); s != f.Doc().Sections().rend(); ++s)
            for (const XrefEntry* e : (*s)->entries) got[ivFormat("%u %u", e->num, e->gen)] = Describe(*e);
        EXPECT_EQ(got, expected) << name;
        EXPECT_TRUE(f.Control().Paths().empty()) << name;
    }
}

TEST(XrefQpdf, DecodedStreamsMatchFilteredData) {
    const struct {
        const char* file;
        ObjId id;
        const char* golden;
    } cases[] = {
        // The cross-reference stream: Flate with PNG Up rows.
        {"qpdf-object-streams.pdf", {8, 0}, "qpdf-object-streams.8-0.bin"},
        {"qpdf-object-streams.pdf", {1, 0}, "qpdf-object-streams.1-0.bin"},  // object stream
        {"qpdf-object-streams.pdf", {7, 0}, "qpdf-object-streams.7-0.bin"},  // page content
        {"qpdf-linearized.pdf", {5, 0}, "qpdf-linearized.5-0.bin"},          // hint stream
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        const pdfObject* obj = ResolveRef(f.Doc(), c.id);
        ASSERT_NE(AsStream(obj), nullptr) << c.golden;
        pdfDecodedStream decoded;
        ASSERT_EQ(OpenDecodedStream(f.Doc(), obj, FindEntry(f.Doc(), c.id), decoded), kOk) << c.golden;
        std::string data;
        ivReadAll(*decoded.stream, data);
        EXPECT_EQ(data, ReadTestFile(c.golden)) << c.golden;
        EXPECT_TRUE(f.TakeMessages().empty()) << c.golden;
    }
}

// The generator's manifest names every fixture with the checksums of its source and output,
// so an edited source whose output was not regenerated (or a hand-edited output) shows here.
TEST(XrefFixtures, GeneratedFilesMatchTheirSources) {
    namespace fs = std::filesystem;
    auto crc = [](const std::string& bytes) {
        char text[9];
        std::snprintf(
            text, sizeof text, "%08lx",
            crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
        return std::string(text);
    };
    std::map<std::string, std::string> manifest;
    std::istringstream in(ReadTestFile("generated.txt"));
    for (std::string name, source, output; in >> name >> source >> output;)
        manifest[name] = source + " " + output;
    const fs::path sources = fs::path(TestDataPath("")).parent_path().parent_path() / "fixtures";
    std::size_t count = 0;
    for (const auto& p : fs::directory_iterator(sources)) {
        std::string file = p.path().filename().string();
        if (file.size() < 4 || file.substr(file.size() - 3) != ".in") continue;
        std::string name = file.substr(0, file.size() - 3);
        std::ifstream src(p.path(), std::ios::binary);
        std::string text((std::istreambuf_iterator<char>(src)), std::istreambuf_iterator<char>());
        EXPECT_EQ(manifest[name], crc(text) + " " + crc(ReadTestFile(name)))
            << name << ": run python3 tests/make_fixtures.py";
        ++count;
    }
    EXPECT_EQ(count, manifest.size()) << "tests/data/generated.txt names a fixture whose source is gone";
}

}  // namespace
