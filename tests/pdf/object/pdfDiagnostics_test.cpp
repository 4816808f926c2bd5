#include "pdf/object/pdfDiagnostics.h"

#include <gtest/gtest.h>

#include "pdf/object/pdfParser.h"
#include "support/TestSupport.h"

TEST(Diagnostics, ScopeTexts) {
    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    ivArena& a = doc->Arena();
    EXPECT_EQ(ivObjIDScope(nullptr, 12, 0, "Accessing Object").GetText(), "Accessing Object 12 0 R");
    EXPECT_EQ(ivObjIDScope(nullptr, 12, 3, nullptr).GetText(), "12 3 R");
    EXPECT_EQ(ivObjIDScope(nullptr, 7, 0, "Analize %s").GetText(), "Analize 7 0 R");

    pdfObject* direct = NewDict(a, {});
    EXPECT_EQ(ivObjScope(nullptr, direct, *doc, "Analize %s").GetText(), "Analize Direct Object");
    EXPECT_EQ(ivObjScope(nullptr, nullptr, *doc, nullptr).GetText(), "Direct Object");

    XrefEntry* entry = doc->NewEntry();
    entry->num = 4;
    pdfStream* stream = NewStream(a, direct, 300, entry);
    entry->object = stream;
    doc->NoteLoaded(entry);
    EXPECT_EQ(ivObjScope(nullptr, stream, *doc, "Accessing stream %s").GetText(),
              "Accessing stream 4 0 R. Stream data start: 300 (0x12Ch)");
}

TEST(Diagnostics, ReportAtAddsThePosition) {
    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    pdfParser src(doc.get(), MemStream(std::string(40, ' ')), 26);
    ReportAt(*doc, src, "Something %s", "odd");
    Report(*doc, "%d %d R Used as something else already", 3, 0);
    EXPECT_EQ(ctl.Texts(), (std::vector<std::string>{"Something odd Stream Position:26, 0x1ah",
                                                     "3 0 R Used as something else already"}));
}
