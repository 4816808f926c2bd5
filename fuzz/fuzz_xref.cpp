// Opening a document from the input bytes: header, startxref, the chain of classic tables and
// cross-reference streams, the catalog and page tree; then every entry loaded, which reads
// each object from the file or from its object stream.
//
// Input: a whole file.
#include <cstdint>
#include <string_view>

#include "FuzzStreams.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfObjectAccess.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ivIOControl control;
    ivPdf doc(FuzzStream({reinterpret_cast<const char*>(data), size}), "fuzz", &control);
    doc.Open();  // on failure the sections read so far are still there to load from
    // Loading may add placeholders for missing objects to the newest section while it is
    // walked; its map keeps iterators valid, as the analysis relies on too.
    for (const auto& section : doc.Sections())
        section->ForEachEntry([&](XrefEntry* e) { LoadObject(doc, e); });
    return 0;
}
