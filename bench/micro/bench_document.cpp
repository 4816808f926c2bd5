// A whole document of many small objects in memory: Open reads the sections, the catalog and
// the page tree; Analyse loads every object, records its referrers and gives it its role.
#include <benchmark/benchmark.h>

#include <map>

#include "BenchData.h"
#include "pdf/analysis/ivPdf.h"

namespace {

struct Document {
    std::string bytes;
    std::uint32_t objects = 0;
};

const Document& DocumentOf(std::uint32_t pages) {
    static std::map<std::uint32_t, Document> docs;
    Document& d = docs[pages];
    if (d.bytes.empty()) d.bytes = bench::SmallObjectsDocument(pages, &d.objects);
    return d;
}

void BM_Open(benchmark::State& state) {
    const Document& d = DocumentOf(static_cast<std::uint32_t>(state.range(0)));
    auto stream = bench::MemStreamOf(d.bytes);
    for (auto _ : state) {
        ivIOControl control;
        ivPdf doc(stream, "bench.pdf", &control);
        if (Failed(doc.Open())) state.SkipWithError("not opened");
        benchmark::DoNotOptimize(doc.Pages().size());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * d.objects));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * d.bytes.size()));
}
BENCHMARK(BM_Open)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

void BM_OpenAndAnalyse(benchmark::State& state) {
    const Document& d = DocumentOf(static_cast<std::uint32_t>(state.range(0)));
    auto stream = bench::MemStreamOf(d.bytes);
    std::size_t references = 0, messages = 0;
    for (auto _ : state) {
        ivIOControl control;
        ivPdf doc(stream, "bench.pdf", &control);
        if (Failed(doc.Open())) state.SkipWithError("not opened");
        doc.Analyse();
        state.PauseTiming();
        references = 0;
        for (const XrefEntry* e : doc.AllEntries()) references += doc.Referrers(e).size();
        messages = control.MessageCount();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * d.objects));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * d.bytes.size()));
    state.counters["objects"] = d.objects;
    state.counters["references"] = static_cast<double>(references);
    state.counters["messages"] = static_cast<double>(messages);
}
BENCHMARK(BM_OpenAndAnalyse)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace
