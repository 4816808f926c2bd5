// Stream decoders: Flate with and without the PNG predictors, and LZW. Throughput counts
// decoded bytes.
#include <benchmark/benchmark.h>

#include <array>

#include "BenchData.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/decode/pdfLzw.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"

namespace {

constexpr std::uint32_t kWidth = 1000, kHeight = 1000;

// Reads a stream to its end; returns the bytes read.
std::uint64_t Drain(ivStream& s) {
    static std::array<std::uint8_t, 64 * 1024> buffer;
    std::uint64_t total = 0;
    std::uint32_t got = 0;
    while (Succeeded(s.Read(buffer.data(), buffer.size(), &got)) && got) total += got;
    return total;
}

// A DecodeParms dictionary parsed from text into `doc`'s arena.
const pdfObject* Params(pdfDocument& doc, const std::string& text) {
    pdfParser source(&doc, bench::MemStreamOf(text), 0);
    ObjList list;
    ParseObjects(doc, source, list, 0);
    return list.items.empty() ? nullptr : list.items.front();
}

// Checks once that the chain gives back the plain rows.
bool Verify(pdfDocument& doc, const std::string& data, const pdfObject* params, const std::string& plain) {
    auto out = CreateFlateOrLZWFilter(doc, bench::MemStreamOf(data), params, false);
    if (!out) return false;
    std::string got;
    return Succeeded(ivReadAll(*out, got)) && got == plain;
}

void BM_FlateDecode(benchmark::State& state) {
    std::string plain;
    const std::string data = bench::FlateImage(kWidth, kHeight, -1, &plain);
    ivIOControl control;
    pdfDocument doc(ivMemStream::Create(), &control);
    if (!Verify(doc, data, nullptr, plain)) state.SkipWithError("round trip failed");
    for (auto _ : state) {
        auto out = CreateFlateOrLZWFilter(doc, bench::MemStreamOf(data), nullptr, false);
        benchmark::DoNotOptimize(Drain(*out));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * plain.size()));
    state.counters["ratio"] = static_cast<double>(plain.size()) / static_cast<double>(data.size());
}
BENCHMARK(BM_FlateDecode)->Unit(benchmark::kMillisecond);

// Argument: the PNG filter of every row (0 None, 1 Sub, 2 Up, 3 Average, 4 Paeth), 5 for all
// five in turn, as image encoders choose them row by row.
void BM_FlatePngPredictor(benchmark::State& state) {
    const int filter = static_cast<int>(state.range(0));
    std::string plain;
    const std::string data = bench::FlateImage(kWidth, kHeight, filter, &plain);
    ivIOControl control;
    pdfDocument doc(ivMemStream::Create(), &control);
    const pdfObject* params =
        Params(doc, "<</Predictor 15/Colors 3/BitsPerComponent 8/Columns " + std::to_string(kWidth) + ">>");
    if (!Verify(doc, data, params, plain)) state.SkipWithError("round trip failed");
    for (auto _ : state) {
        auto out = CreateFlateOrLZWFilter(doc, bench::MemStreamOf(data), params, false);
        benchmark::DoNotOptimize(Drain(*out));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * plain.size()));
    static const char* const kNames[] = {"None", "Sub", "Up", "Average", "Paeth", "mixed"};
    state.SetLabel(kNames[filter]);
}
BENCHMARK(BM_FlatePngPredictor)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);

void BM_DecodeLZW(benchmark::State& state) {
    static const std::string plain = bench::ContentText(4 << 20);
    static const std::string data = bench::LzwEncode(plain);
    auto source = bench::MemStreamOf(data);
    {
        ivMemStream out;
        if (DecodeLZW(*source, out, true) != kOk ||
            std::string(out.Data().begin(), out.Data().end()) != plain)
            state.SkipWithError("round trip failed");
    }
    for (auto _ : state) {
        source->Rewind();
        ivMemStream out;
        benchmark::DoNotOptimize(DecodeLZW(*source, out, true));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * plain.size()));
    state.counters["ratio"] = static_cast<double>(plain.size()) / static_cast<double>(data.size());
}
BENCHMARK(BM_DecodeLZW)->Unit(benchmark::kMillisecond);

}  // namespace
