#include "pdf/decode/ivSHA_384.h"

namespace {

// First 64 bits of the fractional parts of the square roots of the 9th to 16th primes.
constexpr ivSHA_512::State kInitial384 = {
    0xcbbb9d5dc1059ed8ull, 0x629a292a367cd507ull, 0x9159015a3070dd17ull, 0x152fecd8f70e5939ull,
    0x67332667ffc00b31ull, 0x8eb44a8768581511ull, 0xdb0c2e0d64f98fa7ull, 0x47b5481dbefa4fa4ull,
};

}  // namespace

ivSHA_384::ivSHA_384() : ivSHA_512(kInitial384, kDigestSize) {}
