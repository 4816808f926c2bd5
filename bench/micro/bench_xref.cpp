// Reading one cross-reference section: a classic table, and a compressed stream with the
// PNG Up predictor whose entries point mostly into object streams.
#include <benchmark/benchmark.h>

#include <map>

#include "BenchData.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfXrefReader.h"

namespace {

struct File {
    std::string bytes;
    std::uint32_t offset = 0;
};

const File& ClassicFile(std::uint32_t entries) {
    static std::map<std::uint32_t, File> files;
    File& f = files[entries];
    if (f.bytes.empty()) f.bytes = bench::ClassicTableFile(entries, &f.offset);
    return f;
}

const File& StreamFile(std::uint32_t entries) {
    static std::map<std::uint32_t, File> files;
    File& f = files[entries];
    if (f.bytes.empty()) f.bytes = bench::XrefStreamFile(entries, &f.offset);
    return f;
}

void ReadOneSection(benchmark::State& state, const File& file, std::size_t expected) {
    auto stream = bench::MemStreamOf(file.bytes);
    for (auto _ : state) {
        ivIOControl control;
        pdfDocument doc(stream, &control);
        XrefSection* section = doc.AppendSection();
        ivStatus st = ReadSection(doc, *section, file.offset);
        if (Failed(st) || section->entries.size() != expected || control.MessageCount())
            state.SkipWithError("the section was not read whole, or messages were reported");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * expected));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * file.bytes.size()));
}

void BM_ReadClassicTable(benchmark::State& state) {
    const auto entries = static_cast<std::uint32_t>(state.range(0));
    ReadOneSection(state, ClassicFile(entries), entries);
}
BENCHMARK(BM_ReadClassicTable)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void BM_ReadXrefStream(benchmark::State& state) {
    const auto entries = static_cast<std::uint32_t>(state.range(0));
    ReadOneSection(state, StreamFile(entries), entries + 1);  // the stream lists itself too
}
BENCHMARK(BM_ReadXrefStream)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
