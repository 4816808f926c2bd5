#include "pdf/decode/pdfFilterChain.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"
#include "support/TestSupport.h"

namespace {

using Strings = std::vector<std::string>;

std::string Deflate(const std::string& plain) {
    uLongf size = compressBound(plain.size());
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()),
             plain.size());
    packed.resize(size);
    return packed;
}

// A document whose file is "DICT stream\nDATA\nendstream"; decodes its one stream.
struct StreamCase {
    RecordingControl ctl;
    std::unique_ptr<pdfDocument> doc;
    pdfStream* stream = nullptr;

    StreamCase(const std::string& dict, const std::string& data, bool extraChecks = false) {
        doc = DocFromBytes(dict + " stream\n" + data + "\nendstream", &ctl);
        doc->SetExtraChecks(extraChecks);
        pdfParser src(doc.get(), doc->File(), 0);
        ObjList list;
        ParseObjects(*doc, src, list, kParseToEndobj);
        stream = NewStream(doc->Arena(), list.items.at(0), list.streamPos, nullptr);
    }
    std::string Decode(ivStatus* status = nullptr, pdfDecodedStream* handle = nullptr) {
        pdfDecodedStream out;
        ivStatus st = OpenDecodedStream(*doc, stream, nullptr, out);
        if (status) *status = st;
        std::string bytes;
        if (out.stream) ivReadAll(*out.stream, bytes);
        if (handle) *handle = out;
        return bytes;
    }
};

std::string Len(const std::string& data) {
    return std::to_string(data.size());
}

TEST(FilterChain, DecodesKnownFiltersAndPassesOthersThrough) {
    const std::string packed = Deflate("hello, world");
    const struct {
        std::string dict, data, expected;
    } cases[] = {
        {"<< /Length 4 /Filter /DCTDecode >>", "\xFF\xD8\xFF\xE0",
         "\xFF\xD8\xFF\xE0"},                                // image codecs pass through
        {"<< /Length 8 /Filter /AHx >>", "41 42 4>", "AB"},  // a lone last digit is dropped
        {"<< /Length 3 /Filter /ASCII85Decode >>", "z~>", std::string(4, '\0')},
        {"<< /Length " + Len(packed) + " /Filter /FlateDecode >>", packed, "hello, world"},
        // TIFF prediction is deliberately left undone.
        {"<< /Length " + Len(packed) + " /Filter /Fl /DecodeParms << /Predictor 2 /Columns 3 >> >>", packed,
         "hello, world"},
        {"<< /Filter /AHx >>", "4142>", "AB"},  // no Length: the data runs to the end of the file
        {"<< /Length 2 >>", "ABCD", "AB"},
    };
    for (const auto& c : cases) {
        StreamCase sc(c.dict, c.data);
        ivStatus st = kFail;
        EXPECT_EQ(sc.Decode(&st), c.expected) << c.dict;
        EXPECT_EQ(st, kOk) << c.dict;
        EXPECT_TRUE(sc.ctl.Texts().empty()) << c.dict;
    }
    // The run-length filter is not decoded: the inflated bytes come out still encoded, and the
    // extra checks say so.
    for (bool extra : {false, true}) {
        StreamCase runLength("<< /Length " + Len(packed) + " /Filter [/FlateDecode /RunLengthDecode] >>",
                             packed, extra);
        EXPECT_EQ(runLength.Decode(), "hello, world");
        EXPECT_EQ(runLength.ctl.Texts(),
                  extra ? Strings{"RunLengthDecode filter is not supported; the data is left as it is"}
                        : Strings{});
    }
}

// Flate data read as LZW: the parameters are looked up five times; the codes that break are
// said only by the extra checks.
Strings LzwOfFlateData() {
    return Strings(5, "Not a dictionary");
}

TEST(FilterChain, HandleKeepsLengthAndLastFilter) {
    StreamCase raw("<< /Length 4 /Filter /DCT >>", "abcd");
    pdfDecodedStream h;
    raw.Decode(nullptr, &h);
    EXPECT_EQ(h.length, 4);
    EXPECT_TRUE(TextEquals(h.filter, "DCT"));

    StreamCase hex("<< /Length 5 /Filter [/AHx /CCITTFaxDecode] /DecodeParms [null << /K -1 >>] >>", "4142>");
    EXPECT_EQ(hex.Decode(nullptr, &h), "AB");
    EXPECT_EQ(h.length, -1);  // a decoder ran
    EXPECT_TRUE(TextEquals(h.filter, "CCITTFaxDecode"));
    EXPECT_NE(DictGet(h.params, "K"), nullptr);
}

TEST(FilterChain, ReportsBadParametersAndNames) {
    const std::string packed = Deflate("x");
    const struct {
        std::string dict;
        Strings messages;
        ivStatus status;
    } cases[] = {
        {"<< /Length " + Len(packed) + " /Filter /FlateDecode /DecodeParms 5 >>",
         Strings(4, "Not a dictionary"), kOk},
        {"<< /Length " + Len(packed) + " /Filter /LZWDecode /DecodeParms [5] >>",
         LzwOfFlateData(), kOk},
        {"<< /Length " + Len(packed) + " /Filter /FlateDecode /DecodeParms << /Columns (a) >> >>",
         {"Number is Expected"},
         kOk},
        {"<< /Length " + Len(packed) + " /Filter [7 /FlateDecode] >>", {"Can't determine filter type"}, kOk},
        {"<< /Length " + Len(packed) + " /Filter [/FlateDecode 7] >>",
         {},
         kInvalidArg},  // last name not a name
        {"<< /Length " + Len(packed) + " /Filter << /A /B >> >>",
         {"Can't determine filter type"},
         kInvalidArg},
    };
    for (const auto& c : cases) {
        StreamCase sc(c.dict, packed);
        ivStatus st = kOk;
        sc.Decode(&st);
        EXPECT_EQ(sc.ctl.Texts(), c.messages) << c.dict;
        EXPECT_EQ(st, c.status) << c.dict;
    }
}

TEST(FilterChain, AsciiDecoderEdges) {
    const struct {
        std::string filter, data, expected;
        Strings messages;
    } cases[] = {
        {"/AHx", "4G>", "", {"Error parsing hexadimal character"}},
        {"/AHx", "41\t42>", "A", {"Error parsing hexadimal character"}},  // a tab is no white space here
        {"/A85", "!!!!~", "", {"Error in decoding ASCII85"}},             // pending group dropped
        {"/A85", "87cURD]j7BEbo7~>", "Hello world", {}},
        {"/A85", "87cURD]j7BEbk~>", "Hello worl", {}},           // partial group padded with 'u'
        {"/A85", "!!z!!~>", "", {"Error in decoding ASCII85"}},  // 'z' inside a group
        {"/A85", "9jqo^>~>", "Man ", {}},                        // '>' before '~' is a digit
    };
    for (const auto& c : cases) {
        StreamCase sc("<< /Length " + Len(c.data) + " /Filter " + c.filter + " >>", c.data);
        EXPECT_EQ(sc.Decode(), c.expected) << c.data;
        EXPECT_EQ(sc.ctl.Texts(), c.messages) << c.data;
    }
}

TEST(FilterChain, NotAStream) {
    RecordingControl ctl;
    auto doc = DocFromBytes("", &ctl);
    pdfDecodedStream out;
    EXPECT_EQ(OpenDecodedStream(*doc, NewInt(doc->Arena(), 1), nullptr, out), kInvalidArg);
    EXPECT_EQ(ctl.Texts(), Strings{"Not a stream"});
}

}  // namespace
