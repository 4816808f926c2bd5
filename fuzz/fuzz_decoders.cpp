// Each stream decoder with its parameters taken from the input.
//
// Input: a decoder byte, that decoder's parameters, then the encoded data (the rest). Bit 7 of
// the decoder byte hands the data out in short reads instead of from memory.
//   0  ASCIIHexDecode
//   1  ASCII85Decode
//   2  LZW straight: EarlyChange byte
//   3  Flate or LZW through the filter chain's builder, with a DecodeParms dictionary:
//      kind byte (bit 0 LZW, bit 1 EarlyChange 0, bit 2 numbers written as reals, bit 3 one
//      value a name, bit 4 no dictionary), Predictor byte, Columns, Colors, BitsPerComponent (u32)
//   4  the PNG predictor alone: Columns, Colors, BitsPerComponent (u32)
//   5  CCITT Group 4 straight: K (i32), flags byte (bit 0 BlackIs1, bit 1 EncodedByteAlign),
//      width and height (u16, cut to the bitmap bound)
//   6  CCITT through its DecodeParms reader: as 5, the flags also written as integers (bit 2)
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "FuzzStreams.h"
#include "pdf/decode/pdfAsciiFilters.h"
#include "pdf/decode/pdfCcittFax.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/decode/pdfLzw.h"
#include "pdf/decode/pdfPredictor.h"
#include "pdf/object/pdfDocument.h"
#include "platform/ivImage2d.h"

namespace {

// Bitmaps for the fax decoder stay this small, so one input costs little memory.
constexpr std::uint32_t kMaxSide = 4096;

ivRef<ivStream> Source(std::string_view bytes, bool chunked) {
    if (chunked) return std::make_shared<FuzzChunkedStream>(bytes, 5);
    return FuzzStream(bytes);
}

// Builds a DecodeParms dictionary in the document's arena, as the parser would have.
class ParamsBuilder {
public:
    ParamsBuilder(pdfDocument& doc, bool asReals) : m_doc(doc), m_asReals(asReals) {}
    void Number(const char* key, std::int64_t value) {
        Key(key);
        m_items.push_back(m_asReals
                              ? static_cast<pdfObject*>(NewReal(m_doc.Arena(), static_cast<double>(value)))
                              : NewInt(m_doc.Arena(), static_cast<std::int32_t>(value)));
    }
    void Bool(const char* key, bool value) {
        Key(key);
        m_items.push_back(NewBool(m_doc.Arena(), value));
    }
    void Name(const char* key, const char* value) {
        Key(key);
        m_items.push_back(NewBytes(m_doc.Arena(), kTagName, std::string_view(value)));
    }
    pdfDict* Build() { return NewDict(m_doc.Arena(), m_items); }

private:
    void Key(const char* key) { m_items.push_back(NewBytes(m_doc.Arena(), kTagName, std::string_view(key))); }

    pdfDocument& m_doc;
    bool m_asReals;
    std::vector<pdfObject*> m_items;
};

// Predictor values worth reaching: none, TIFF, each PNG one, and a few odd ones.
std::uint32_t PickPredictor(std::uint8_t b) {
    static const std::uint32_t kValues[] = {1, 2, 10, 11, 12, 13, 14, 15, 0, 9, 16, 255};
    return b < 128 ? kValues[b % std::size(kValues)] : b;
}

void FlateOrLzw(pdfDocument& doc, FuzzInput& in, bool chunked) {
    const std::uint8_t kind = in.Byte();
    const std::uint32_t predictor = PickPredictor(in.Byte());
    const std::uint32_t columns = in.U32(), colors = in.U32(), bpc = in.U32();
    const pdfObject* params = nullptr;
    if (!(kind & 0x10)) {
        ParamsBuilder b(doc, kind & 4);
        b.Number("Predictor", predictor);
        if (kind & 8)
            b.Name("Columns", "Wide");
        else
            b.Number("Columns", columns);
        b.Number("Colors", colors);
        b.Number("BitsPerComponent", bpc);
        if (kind & 2) b.Number("EarlyChange", 0);
        params = b.Build();
    }
    auto out = CreateFlateOrLZWFilter(doc, Source(in.Rest(), chunked), params, kind & 1);
    if (out) FuzzDrain(*out);
}

void Ccitt(pdfDocument& doc, FuzzInput& in, bool chunked, bool throughParams) {
    CcittParams p;
    p.k = in.I32();
    const std::uint8_t flags = in.Byte();
    p.blackIs1 = flags & 1;
    p.encodedByteAlign = flags & 2;
    const std::uint32_t width = in.U16() % kMaxSide + 1, height = in.U16() % kMaxSide + 1;
    ivImage2d image;
    if (Failed(image.Create(ivImage2d::kIndexed1, width, height))) return;
    auto source = Source(in.Rest(), chunked);
    if (!throughParams) {
        DecodeCCITTG4(*source, image, p);
        return;
    }
    ParamsBuilder b(doc, false);
    b.Number("K", p.k);
    if (flags & 4) {
        b.Number("BlackIs1", p.blackIs1);
        b.Number("EncodedByteAlign", p.encodedByteAlign);
    } else {
        b.Bool("BlackIs1", p.blackIs1);
        b.Bool("EncodedByteAlign", p.encodedByteAlign);
    }
    b.Number("Columns", width);
    b.Number("Rows", height);
    DecodeCCITTFax(doc, b.Build(), image, *source);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const std::uint8_t decoder = in.Byte();
    const bool chunked = decoder & 0x80;
    ivIOControl control;
    pdfDocument doc(ivMemStream::Create(), &control);
    switch ((decoder & 0x7F) % 7) {
        case 0:
            DecodeASCIIHex(doc, *Source(in.Rest(), chunked));
            break;
        case 1:
            DecodeASCII85(doc, *Source(in.Rest(), chunked));
            break;
        case 2: {
            const bool earlyChange = in.Flag();
            ivMemStream out;
            DecodeLZW(*Source(in.Rest(), chunked), out, earlyChange);
            break;
        }
        case 3:
            FlateOrLzw(doc, in, chunked);
            break;
        case 4: {
            const std::uint32_t columns = in.U32(), colors = in.U32(), bpc = in.U32();
            auto out = ApplyPNGPredictor(Source(in.Rest(), chunked), columns, colors, bpc);
            if (out) FuzzDrain(*out);
            break;
        }
        case 5:
            Ccitt(doc, in, chunked, false);
            break;
        default:
            Ccitt(doc, in, chunked, true);
    }
    return 0;
}
