// The lexer and parser: object text as the loader reads it, and content streams.
#include <benchmark/benchmark.h>

#include "BenchData.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"

namespace {

constexpr std::size_t kObjectBytes = 4 << 20;
constexpr std::size_t kContentBytes = 2 << 20;

const std::string& Objects(std::size_t* count) {
    static std::size_t n = 0;
    static const std::string text = bench::ObjectText(kObjectBytes, &n);
    if (count) *count = n;
    return text;
}

// One ParseObjects over the whole buffer: values, "obj" keywords and all, as one list.
void BM_ParseObjectsBulk(benchmark::State& state) {
    std::size_t count = 0;
    const std::string& text = Objects(&count);
    auto stream = bench::MemStreamOf(text);
    std::size_t items = 0;
    for (auto _ : state) {
        ivIOControl control;
        pdfDocument doc(stream, &control);
        pdfParser source(&doc, stream, 0);
        ObjList list;
        ivStatus st = ParseObjects(doc, source, list, 0);
        items = list.items.size();
        benchmark::DoNotOptimize(st);
        if (control.MessageCount()) state.SkipWithError("the parser reported messages");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * count));
    state.counters["top_level_values"] = static_cast<double>(items);
}
BENCHMARK(BM_ParseObjectsBulk)->Unit(benchmark::kMillisecond);

// Object by object, as loading reads them: "N G obj", then the body up to "endobj".
void BM_ParseObjectsOneByOne(benchmark::State& state) {
    std::size_t count = 0;
    const std::string& text = Objects(&count);
    auto stream = bench::MemStreamOf(text);
    for (auto _ : state) {
        ivIOControl control;
        pdfDocument doc(stream, &control);
        pdfParser source(&doc, stream, 0);
        std::size_t read = 0;
        ObjId id;
        while (ReadObjectHeader(doc, source, nullptr, id)) {
            PooledList list(doc.ListPool());
            if (Failed(ParseObjects(doc, source, *list, kParseToEndobj))) break;
            benchmark::DoNotOptimize(list->items.data());
            ++read;
        }
        if (read != count || control.MessageCount()) state.SkipWithError("objects missed or messages reported");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * count));
}
BENCHMARK(BM_ParseObjectsOneByOne)->Unit(benchmark::kMillisecond);

// A content stream: operands and operators to the end of the data.
void BM_ParseContent(benchmark::State& state) {
    static const std::string text = bench::ContentText(kContentBytes);
    auto stream = bench::MemStreamOf(text);
    std::size_t items = 0;
    for (auto _ : state) {
        ivIOControl control;
        pdfDocument doc(stream, &control);
        pdfParser source(&doc, stream, 0);
        ObjList list;
        ivStatus st = ParseObjects(doc, source, list, kParseContent);
        items = list.items.size();
        benchmark::DoNotOptimize(st);
        if (control.MessageCount()) state.SkipWithError("the parser reported messages");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * items));
}
BENCHMARK(BM_ParseContent)->Unit(benchmark::kMillisecond);

}  // namespace
