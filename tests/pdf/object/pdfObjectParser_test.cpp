#include "pdf/object/pdfObjectParser.h"

#include <gtest/gtest.h>

#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfInlineImage.h"
#include "pdf/object/pdfObjectText.h"
#include "pdf/object/pdfParser.h"
#include "pdf/object/pdfParserW.h"
#include "support/TestSupport.h"

namespace {

using namespace std::string_literals;

struct Parsed {
    std::vector<std::string> values;  // token text of each top-level record, with its type
    std::vector<std::string> messages;
    ivStatus status = kOk;
    std::uint32_t streamPos = 0;
};

std::string Describe(const pdfObject* o) {
    return std::string(TypeName(o->tag)) + " " + ObjectText(o);
}

Parsed Parse(const std::string& text, unsigned flags = 0) {
    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    pdfParser src(doc.get(), MemStream(text), 0);
    ObjList list;
    Parsed p;
    p.status = ParseObjects(*doc, src, list, flags);
    for (const pdfObject* o : list.items) p.values.push_back(Describe(o));
    p.messages = ctl.Texts();
    p.streamPos = list.streamPos;
    return p;
}

using Strings = std::vector<std::string>;

TEST(ObjectParser, NumbersAndReferences) {
    const struct {
        const char* in;
        Strings values;
        Strings messages;
    } cases[] = {
        {"1 0 R", {"Indirect 1 0 R"}, {}},
        {"1 0 5 R", {"Int 1", "Indirect 0 5 R"}, {}},  // only the last two integers form the reference
        {"1 R", {"Int 1"}, {"Error reading indirect reference Stream Position:3, 0x3h"}},
        {"-.5", {"Real -0.5"}, {}},
        {"-7", {"Int -7"}, {}},
        {"1.2.3", {"Int 1", "Int 3"}, {"Unexpected second point in floating point Stream Position:4, 0x4h"}},
        {"4294967297", {"Int 1"}, {}},  // digits wrap in 32 bits silently
        {"+5", {"Key +5"}, {}},         // there is no plus sign
        {"1e5", {"Int 1", "Key e5"}, {}},
        {"-x", {"Int -72"}, {}},  // any byte after '-' counts as a digit, its code minus 48
        {"3 4 5 6 R 7", {"Int 3", "Int 4", "Indirect 5 6 R", "Int 7"}, {}},
        {"12 70000 R", {"Indirect 12 4464 R"}, {}},  // generation kept to 16 bits
    };
    for (const auto& c : cases) {
        Parsed p = Parse(c.in);
        EXPECT_EQ(p.values, c.values) << c.in;
        EXPECT_EQ(p.messages, c.messages) << c.in;
    }
}

TEST(ObjectParser, LiteralStrings) {
    const struct {
        std::string in;
        Strings values;
        Strings messages;
    } cases[] = {
        // The first ')' ends the string; '(' is stored twice; ')' does not end a keyword.
        {"(a(b)c)", {"String (a((b)", "Key c)"}, {}},
        {"(\\101\\9)",
         {"String (A9)"},
         {"Backslash is ignored. Wrong escape sequence Stream Position:7, 0x7h"}},
        {"(\\18)", {"String (/020)"}, {}},              // 8 counts as an octal digit: 1*8+8
        {"(a\nb)", {"String (a/015b)"}, {}},            // LF is stored as CR
        {"(a\r\nb)", {"String (a/015/015/015b)"}, {}},  // CR LF becomes three CRs
        {"(a\r\rb)", {"String (a/015/015b)"}, {}},      // a CR after a CR is absorbed
        {"(a\\\nb)", {"String (ab)"}, {}},              // line continuation
        {"(\\n\\t\\\\\\))", {"String (/012/011\\/051)"}, {}},
        {"(\xFE\xFF\x00\x41)"s, {"UNICODE String (A)"}, {}},
        {"(\xFF\xFE\x41\x00)"s, {"UNICODE String (A)"}, {}},
        {"(\xFE\xFF\x00\x41\x00)"s,
         {"String (\xFE\xFF/000A/000)"},
         {"Length of UNICODE string must be even number Stream Position:7, 0x7h"}},
    };
    for (const auto& c : cases) {
        Parsed p = Parse(c.in);
        EXPECT_EQ(p.values, c.values) << c.in;
        EXPECT_EQ(p.messages, c.messages) << c.in;
    }
}

TEST(ObjectParser, HexStringsAndNames) {
    const struct {
        const char* in;
        Strings values;
        Strings messages;
        ivStatus status;
    } cases[] = {
        {"<41 42>", {"HEX String 4142"}, {}, kOk},
        {"<414>", {}, {}, kOk},  // an odd digit count drops the value without a message
        {"<41\r42>", {}, {"Error parsing hexadimal character Stream Position:5, 0x5h"}, kFail},
        {"<4142", {}, {"HEX String read error Stream Position:5, 0x5h"}, kFail},
        {"/A#42", {"Name /AB"}, {}, kOk},
        {"/A#4", {}, {"Error parsing hexadimal character Stream Position:4, 0x4h"}, kFail},
        {"/", {"Name /"}, {}, kOk},
        {"/a)b{c}", {"Name /a)b{c}"}, {}, kOk},  // ')', '{' and '}' do not end a name
        {"/A/B", {"Name /A", "Name /B"}, {}, kOk},
    };
    for (const auto& c : cases) {
        Parsed p = Parse(c.in);
        EXPECT_EQ(p.values, c.values) << c.in;
        EXPECT_EQ(p.messages, c.messages) << c.in;
        EXPECT_EQ(p.status, c.status) << c.in;
    }
}

TEST(ObjectParser, DictionariesArraysAndBrackets) {
    const struct {
        const char* in;
        Strings values;
        Strings messages;
    } cases[] = {
        {"<< /A 1 /A 2 >>", {"Dictionary << /A 1 /A 2 >>"}, {}},  // duplicate keys are kept
        {"<< /A >>", {"Dictionary << >>"}, {"Invalid dictionary  Stream Position:8, 0x8h"}},
        {"[1 [2] (x)]", {"Array [1 [2] (x)]"}, {}},
        {"[]", {"Array []"}, {}},
        {"] 1", {"Key ]", "Int 1"}, {"Unexpected - ] Stream Position:1, 0x1h"}},
        // The byte after a lone '>' starts a new token: here the Key "x", which unbalances the pairs.
        {"<< /A 1 >x >>",
         {"Dictionary << /A 1 >>"},
         {"Expected - < Stream Position:10, 0xah", "Invalid dictionary  Stream Position:13, 0xdh"}},
        {"true false null", {"Bool true", "Bool false", "NULL null"}, {}},
        {"1 0 obj 5 endobj", {"Int 1", "Int 0", "Key obj", "Int 5"}, {}},
        {"<< /A 1", {"Dictionary << /A 1 >>"}, {}},  // closed where the data ends
    };
    for (const auto& c : cases) {
        Parsed p = Parse(c.in);
        EXPECT_EQ(p.values, c.values) << c.in;
        EXPECT_EQ(p.messages, c.messages) << c.in;
    }
}

TEST(ObjectParser, ParseFlagsEndTheParse) {
    Parsed p = Parse("5 endobj 6", kParseToEndobj);
    EXPECT_EQ(p.values, Strings{"Int 5"});
    p = Parse("1 0 0 RG endstream 7", kParseContent);
    EXPECT_EQ(p.values, (Strings{"Int 1", "Int 0", "Int 0", "Key RG"}));
    p = Parse("q endstream Q");
    EXPECT_EQ(p.values, (Strings{"Key q", "Key Q"}));  // endstream is ignored outside content mode
}

TEST(ObjectParser, StreamKeyword) {
    const struct {
        const char* in;
        std::uint32_t pos;
        bool message;
    } cases[] = {
        {"<<>> stream\nDATA", 12, false},    {"<<>> stream\r\nDATA", 13, false},
        {"<<>> stream \r\nDATA", 14, false},  // blanks before the line end are allowed
        {"<<>> stream\rDATA", 13, true},      // CR alone: the byte after it is used up too
        {"<<>> streamDATA", 0, false},        // a different keyword
    };
    for (const auto& c : cases) {
        Parsed p = Parse(c.in);
        EXPECT_EQ(p.streamPos, c.pos) << c.in;
        bool reported =
            !p.messages.empty() &&
            p.messages[0].rfind("Invalid characters after stream. Must be 0x0a or 0x0d 0x0a", 0) == 0;
        EXPECT_EQ(reported, c.message) << c.in;
    }
}

TEST(ObjectParser, CommentsAndStatus) {
    EXPECT_EQ(Parse("").status, kFail);               // nothing read
    EXPECT_EQ(Parse("1 % comment").status, kRemark);  // ended inside a comment
    Parsed p = Parse("% c\r1");
    EXPECT_EQ(p.values, Strings{"Int 1"});
    EXPECT_EQ(p.status, kOk);
}

TEST(ObjectParser, DeepNestingStopsWithAMessage) {
    std::string deep(100000, '[');
    Parsed p = Parse(deep);
    EXPECT_EQ(p.status, kFail);
    ASSERT_EQ(p.messages.size(), 1u);
    EXPECT_EQ(p.messages[0].rfind("Arrays and dictionaries are nested too deep", 0), 0u);
    std::string mixed;
    for (int i = 0; i < 50000; ++i) mixed += "<< /A [";
    EXPECT_EQ(Parse(mixed).status, kFail);
}

TEST(ObjectParser, InlineImages) {
    // The image becomes one operation: the image record, then "EI".
    Parsed p = Parse("BI /W 2 /H 1 ID \x01\x02 EI Q", kParseContent);
    EXPECT_EQ(p.values, (Strings{"*** [inline image]", "Key EI", "Key Q"}));
    EXPECT_TRUE(p.messages.empty());

    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    pdfParser src(doc.get(), MemStream("BI /W 2 /H (x) /CS /G /BPC 8 /F /AHx ID 0aff> EI"), 0);
    ObjList list;
    ParseObjects(*doc, src, list, kParseContent);
    ASSERT_EQ(list.items.size(), 2u);
    const auto* image = static_cast<const pdfInlineImage*>(list.items[0]);
    EXPECT_EQ(ObjectText(image->params),
              "<< /Width 2 /Height (x) /ColorSpace /DeviceGray /BitsPerComponent 8 /Filter /AHx >>");
    EXPECT_EQ(std::string(image->Bytes().begin(), image->Bytes().end()), "0aff>");
    EXPECT_EQ(ctl.Texts(), Strings{"Number is Expected"});  // the Height
    p = Parse("BI /W 1 ID abc", kParseContent);             // no EI: the data runs to the end
    EXPECT_EQ(p.values, (Strings{"*** [inline image]", "Key EI"}));
    EXPECT_TRUE(p.messages.empty());  // said by the extra checks only
    p = Parse("ID x", kParseContent);
    EXPECT_EQ(p.messages, Strings{"There was no BI previously Stream Position:3, 0x3h"});
    p = Parse("BI BI", kParseContent);
    EXPECT_EQ(p.messages, Strings{"Nested Inline images are not allowed Stream Position:5, 0x5h"});
}

TEST(ObjectHeader, ChecksNumbersAndKeyword) {
    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    ObjId out;
    ObjId want{11, 0};
    pdfParser misaligned(doc.get(), MemStream("12 0 obj"), 0);
    EXPECT_FALSE(ReadObjectHeader(*doc, misaligned, &want, out));
    pdfParser noObj(doc.get(), MemStream("11 0 xyz"), 0);
    EXPECT_FALSE(ReadObjectHeader(*doc, noObj, &want, out));
    EXPECT_EQ(out.num, 11u);
    pdfParser glued(doc.get(), MemStream("11 0 obj<<>>"), 0);
    EXPECT_TRUE(ReadObjectHeader(*doc, glued, &want, out));
    pdfParser empty(doc.get(), MemStream("11 0"), 0);
    EXPECT_FALSE(ReadObjectHeader(*doc, empty, &want, out));
    EXPECT_EQ(ctl.Texts(), (Strings{"Object Misaligned Stream Position:8, 0x8h",
                                    "'obj' is expected Stream Position:8, 0x8h"}));
}

TEST(Accessors, TypedValues) {
    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    ivArena& a = doc->Arena();
    std::uint32_t n = 0;
    EXPECT_EQ(GetInteger(*doc, NewReal(a, 2.6), &n), kRemark);
    EXPECT_EQ(n, 3u);
    EXPECT_EQ(GetInteger(*doc, NewInt(a, 7), &n), kOk);
    EXPECT_EQ(n, 7u);
    EXPECT_EQ(GetInteger(*doc, NewBytes(a, kTagName, "X"), &n), kWrongType);
    EXPECT_EQ(GetIntegerChecked(*doc, nullptr, &n), kInvalidArg);
    bool b = true;
    EXPECT_EQ(GetBool(*doc, NewInt(a, 0), &b), kOk);
    EXPECT_FALSE(b);
    EXPECT_EQ(GetBool(*doc, NewInt(a, 5), &b), kOk);
    EXPECT_TRUE(b);
    EXPECT_EQ(GetBool(*doc, NewBytes(a, kTagName, "X"), &b), kWrongType);
    double d = 0;
    EXPECT_EQ(GetNumber(*doc, NewInt(a, 4), &d), kRemark);
    EXPECT_EQ(GetNumber(*doc, NewBytes(a, kTagName, "X"), &d), kWrongType);
    EXPECT_EQ(ctl.Texts(), (Strings{"Number is Expected", "BOOL is Expected"}));

    std::u16string text;
    const std::uint8_t bom[] = {0xFE, 0xFF, 0x00, 0x41};
    EXPECT_EQ(GetText(*doc, NewBytes(a, kTagHexString, std::span(bom)), &text), kOk);
    EXPECT_EQ(text, u"A");
    EXPECT_EQ(GetText(*doc, NewBytes(a, kTagHexString, std::span(bom, 2)), &text), kOk);
    EXPECT_EQ(text, u"");
    EXPECT_EQ(GetText(*doc, NewInt(a, 1), &text), kInvalidArg);
}

TEST(ObjectModel, NamesSizesAndLookup) {
    EXPECT_STREQ(TypeName(kTagInt), "Int");
    EXPECT_STREQ(TypeName(kTagKey), "Key");
    EXPECT_STREQ(TypeName(0), "Unknown");
    EXPECT_STREQ(TypeName(99), "***");
    ivArena arena;
    EXPECT_EQ(RecordSize(NewArray(arena, {})), 13u);
    EXPECT_EQ(RecordSize(NewDict(arena, {})), 21u);
    pdfObject* items[] = {NewBytes(arena, kTagName, "Type"),
                          NewBytes(arena, kTagString, std::string_view("XRef\0x", 6))};
    pdfDict* d = NewDict(arena, items);
    // Literal names compare up to the terminating 0, so embedded zeros end the comparison.
    EXPECT_TRUE(TextEquals(DictGet(d, "Type"), "XRef"));
    EXPECT_EQ(DictGet(d, "Missing"), nullptr);
}

}  // namespace

namespace {

TEST(TokenReader, SplitsAtBlanksAndDelimiters) {
    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    pdfParser src(doc.get(), MemStream(" xref\r\n0 12 %x<<a=b>>"), 0);
    std::vector<std::string> tokens;
    for (std::string t; ReadToken(src, t);) tokens.push_back(t);
    EXPECT_EQ(tokens, (std::vector<std::string>{"xref", "0", "12", "%x", "<", "<", "a", "=", "b", ">", ">"}));

    pdfParserStrW wide(u"to 12 0 R,x\u00e9");
    std::vector<std::u16string> units;
    for (std::u16string t; ReadToken(wide, t);) units.push_back(t);
    EXPECT_EQ(units, (std::vector<std::u16string>{u"to", u"12", u"0", u"R", u",", u"x\u00e9"}));
}

}  // namespace
