// The ciphers of the security handler over 1 MiB buffers.
#include <benchmark/benchmark.h>

#include <vector>

#include "BenchData.h"
#include "pdf/decode/AesContext.h"
#include "pdf/decode/Rc4State.h"

namespace {

constexpr std::size_t kBytes = 1 << 20;

std::vector<std::uint8_t> RandomBytes(std::size_t n, std::uint64_t seed) {
    bench::Rng r(seed);
    std::vector<std::uint8_t> v(n);
    for (auto& b : v) b = static_cast<std::uint8_t>(r.Next() >> 56);
    return v;
}

// Argument: the key length in bytes (16 for AES-128, 32 for AES-256).
void BM_AesCbcDecrypt(benchmark::State& state) {
    const auto key = RandomBytes(static_cast<std::size_t>(state.range(0)), 1);
    const auto iv = RandomBytes(AesContext::kBlockSize, 2);
    const auto in = RandomBytes(kBytes, 3);
    std::vector<std::uint8_t> out(kBytes);
    AesContext aes;
    if (aes.ExpandKey(key) != kAesOk) state.SkipWithError("key");
    for (auto _ : state) {
        aes.SetIv(std::span<const std::uint8_t, AesContext::kBlockSize>(iv.data(), AesContext::kBlockSize));
        benchmark::DoNotOptimize(aes.CbcDecrypt(in, out));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBytes));
}
BENCHMARK(BM_AesCbcDecrypt)->Arg(16)->Arg(32)->Unit(benchmark::kMicrosecond);

void BM_AesCbcEncrypt(benchmark::State& state) {
    const auto key = RandomBytes(static_cast<std::size_t>(state.range(0)), 1);
    const auto iv = RandomBytes(AesContext::kBlockSize, 2);
    const auto in = RandomBytes(kBytes, 3);
    std::vector<std::uint8_t> out(kBytes);
    AesContext aes;
    if (aes.ExpandKey(key) != kAesOk) state.SkipWithError("key");
    for (auto _ : state) {
        aes.SetIv(std::span<const std::uint8_t, AesContext::kBlockSize>(iv.data(), AesContext::kBlockSize));
        benchmark::DoNotOptimize(aes.CbcEncrypt(in, out));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBytes));
}
BENCHMARK(BM_AesCbcEncrypt)->Arg(32)->Unit(benchmark::kMicrosecond);

// Argument: the key length in bytes (5 for 40-bit keys, 16 for 128-bit ones).
void BM_Rc4(benchmark::State& state) {
    const auto key = RandomBytes(static_cast<std::size_t>(state.range(0)), 4);
    auto data = RandomBytes(kBytes, 5);
    for (auto _ : state) {
        Rc4State rc4(key);
        rc4.Process(data);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBytes));
}
BENCHMARK(BM_Rc4)->Arg(5)->Arg(16)->Unit(benchmark::kMicrosecond);

}  // namespace
