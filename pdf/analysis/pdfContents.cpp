#include "pdf/analysis/pdfContents.h"

#include <algorithm>

#include "pdf/analysis/ivPdf.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"

ivStatus ReadContentStream(ivPdf& doc, const pdfObject* stream, std::shared_ptr<const pdfContentOps>& ops) {
    ivObjScope scope(doc.Control(), stream, doc, "Accessing stream %s");
    ops.reset();
    if (!stream) return kMissing;
    if (auto cached = doc.CachedContents(stream)) {
        ops = cached;
        return kOk;
    }
    pdfDecodedStream decoded;
    if (ivStatus st = OpenDecodedStream(doc, stream, FindEntryByRecord(doc, stream), decoded); Failed(st))
        return st;
    const auto limit = static_cast<std::uint32_t>(std::min<std::uint64_t>(doc.ContentLimit(), 0xFFFFFFFEu));
    pdfParser source(&doc, decoded.stream, 0, limit);
    ObjList list;
    ivStatus st = ParseObjects(doc, source, list, kParseContent);
    if (std::uint32_t pos = 0; source.GetPosition(pos) && pos >= limit)
        Report(doc, "Decoded stream data exceeds %llu bytes; the rest is not read",
               static_cast<unsigned long long>(limit));
    if (Failed(st)) return st;
    auto parsed = std::make_shared<const pdfContentOps>(std::move(list.items));
    doc.CacheContents(stream, parsed);
    ops = std::move(parsed);
    return kOk;
}

ivStatus ReadPageContents(ivPdf& doc, const pdfObject* page, std::shared_ptr<const pdfContentOps>& ops) {
    ivObjScope scope(doc.Control(), page, doc, "Reading Contents of Page %s");
    ops.reset();
    if (!AsDict(page)) {
        Report(doc, "Not a dictionary");
        return kFail;
    }
    const pdfObject* contents = DictGet(page, "Contents");
    if (!contents) return kFail;
    contents = Deref(doc, contents);
    if (AsStream(contents)) return ReadContentStream(doc, contents, ops);
    const pdfArray* streams = AsArray(contents);
    if (!streams || streams->count == 0) return kFail;
    // The streams are pieces of one page description: together they give at most the tokens
    // one stream may, however often the array names the same stream.
    const std::uint64_t budget = doc.ContentLimit() / 2;
    std::vector<std::shared_ptr<const pdfContentOps>> parts;
    std::uint64_t total = 0;
    for (const pdfObject* item : streams->Elements()) {
        item = Deref(doc, item);
        if (!item) continue;
        if (!AsStream(item)) {
            Report(doc, "Not a stream");
            continue;
        }
        std::shared_ptr<const pdfContentOps> part;
        if (Failed(ReadContentStream(doc, item, part))) continue;
        total += part->size();
        parts.push_back(std::move(part));
        if (total > budget) {
            Report(doc, "Page contents exceed %llu tokens; the rest is not read",
                   static_cast<unsigned long long>(budget));
            break;
        }
    }
    if (parts.empty()) return kFail;
    auto combined = std::make_shared<pdfContentOps>();
    const auto wanted = static_cast<std::size_t>(std::min(total, budget));
    combined->reserve(wanted);
    for (const auto& part : parts) {
        const std::size_t room = wanted - combined->size();
        combined->insert(combined->end(), part->begin(), part->begin() + std::min(room, part->size()));
    }
    ops = std::move(combined);
    return kOk;
}

std::vector<pdfOperation> SplitOperations(const pdfContentOps& ops) {
    std::vector<pdfOperation> out;
    ForEachOperation(ops, [&](const pdfOperation& op) { out.push_back(op); });
    return out;
}
