// Image decoding: the codecs behind the factory, and image XObjects decoded by the analysis.
//
// Input: a kind byte, then
//   0  JPEG data (the rest)
//   1  JPEG 2000 data (the rest)
//   2  JBIG2: globals (a field, 16-bit length first; empty: none), then the page data
//   3  an image XObject: the entries of its dictionary (a field, typed as in a file, without
//      "<<" and Length), the body of object 5 that the dictionary may name (a field: a colour
//      space, a lookup, JBIG2 globals...) and of object 6, a stream with Length filled in
//      whose entries are a field; then the image data. Bit 7 of the kind passes DCT and
//      CCITT data through instead of decoding it, as the export's keep-JPEG setting does.
// Bitmaps are bounded by the core's own limit (ivImage2d::kMaxBytes).
#include <cstdint>
#include <memory>
#include <string>

#include "FuzzInput.h"
#include "FuzzStreams.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivCodec.h"
#include "support/PdfBuilder.h"

namespace {

void Import(const char* codec, std::string_view globals, std::string_view data) {
    auto importer = CreateInterface<ivImageImporter>(codec);
    if (!importer) return;  // a build without this codec
    if (!globals.empty())
        importer->SetGlobals(
            std::span(reinterpret_cast<const std::uint8_t*>(globals.data()), globals.size()));
    ivImage2d image;
    importer->Decode(*FuzzStream(data), image);
    (void)importer->ErrorText();
}

void ImageXObject(bool passThrough, FuzzInput& in) {
    const std::string_view entries = in.Field(), object5 = in.Field(), stream6 = in.Field();
    const std::string_view samples = in.Rest();
    PdfBuilder pdf;
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
    pdf.Stream(3, " /Type /XObject /Subtype /Image " + std::string(entries), samples);
    pdf.Object(5, object5);
    // Twelve bytes: four RGB or three CMYK palette entries.
    static constexpr char kLookup[] = "\x00\x40\x80\xC0\xFF\x10\x20\x30\x40\x50\x60\x70";
    pdf.Stream(6, stream6, std::string_view(kLookup, sizeof kLookup - 1));
    pdf.StartXref(pdf.Table(" /Size 7 /Root 1 0 R"));

    ivIOControl control;
    ivPdf doc(FuzzStream(pdf.Bytes()), "fuzz.pdf", &control);
    if (Failed(doc.Open())) return;
    const pdfObject* object = ResolveRef(doc, {3, 0});
    if (!object) return;
    std::unique_ptr<ivImage2d> image;
    ivRef<ivStream> compressed;
    DecodeImage(doc, object, image, passThrough ? &compressed : nullptr);
    if (compressed) FuzzDrain(*compressed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const std::uint8_t kind = in.Byte();
    switch ((kind & 0x7F) % 4) {
        case 0:
            Import("jpeg", {}, in.Rest());
            break;
        case 1:
            Import("jpx", {}, in.Rest());
            break;
        case 2: {
            const std::string_view globals = in.Field();
            Import("jbig2", globals, in.Rest());
            break;
        }
        default:
            ImageXObject(kind & 0x80, in);
    }
    return 0;
}
