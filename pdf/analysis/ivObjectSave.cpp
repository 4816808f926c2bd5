#include "pdf/analysis/ivObjectSave.h"

#include <algorithm>
#include <vector>

#include "pdf/analysis/ivPdf.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfObjectAccess.h"

namespace {

constexpr std::uint32_t kChunk = 64 * 1024;

// Copies up to `count` bytes (or all, with kAll) from where `from` stands.
constexpr std::uint64_t kAll = ~std::uint64_t(0);

ivStatus CopyBytes(ivStream& from, ivStream& out, std::uint64_t count) {
    std::vector<char> chunk(kChunk);
    while (count > 0) {
        const auto want = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, kChunk));
        std::uint32_t got = 0, written = 0;
        const ivStatus st = from.Read(chunk.data(), want, &got);
        if (got && Failed(out.Write(chunk.data(), got, &written))) return kFail;
        if (Failed(st)) return st;
        if (got == 0) return kOk;  // the data ended
        if (count != kAll) count -= got;
    }
    return kOk;
}

// Reads and drops `count` bytes; false when the data ends or fails first.
bool Skip(ivStream& from, std::uint64_t count) {
    std::vector<char> chunk(kChunk);
    while (count > 0) {
        std::uint32_t got = 0;
        const auto want = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, kChunk));
        if (Failed(from.Read(chunk.data(), want, &got)) || got == 0) return false;
        count -= got;
    }
    return true;
}

ivStatus CopyFromObjectStream(ivPdf& doc, const XrefEntry& entry, ivStream& out) {
    const pdfStream* stream = AsStream(ResolveRef(doc, {entry.objStm, 0}));
    const ObjStmIndex::Item* item =
        stream && stream->objStmIndex ? stream->objStmIndex->FindFirst(entry.num) : nullptr;
    if (!item) return kNotFound;
    pdfDecodedStream data;
    if (ivStatus st = OpenDecodedStream(doc, stream, FindEntryByRecord(doc, stream), data);
        Failed(st) || !data.stream)
        return kNotFound;
    // Decoded data does not seek: the bytes before the object are read and dropped.
    if (!Skip(*data.stream, item->offset)) return kNotFound;
    return CopyBytes(*data.stream, out, entry.length == kUnknownLength ? kAll : entry.length);
}

}  // namespace

ivStatus CopyEntryBytes(ivPdf& doc, const XrefEntry& entry, ivStream& out) {
    if (entry.flags & kXrefNotFound) return kNotFound;
    if (entry.Compressed()) return CopyFromObjectStream(doc, entry, out);
    if (entry.offset >= doc.FileSize()) return kNotFound;
    ivStream& file = *doc.File();
    file.Seek(entry.offset, ivSeekOrigin::Begin);
    const std::uint64_t length =
        entry.length == kUnknownLength ? doc.FileSize() - entry.offset : entry.length;
    return CopyBytes(file, out, length);
}

ivStatus CopyDecodedStream(ivPdf& doc, const pdfObject* stream, ivStream& out) {
    pdfDecodedStream data;
    const ivStatus st = OpenDecodedStream(doc, stream, FindEntryByRecord(doc, stream), data);
    if (!data.stream) return Failed(st) ? st : kNotFound;
    return CopyBytes(*data.stream, out, kAll);
}
