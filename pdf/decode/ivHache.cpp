#include "pdf/decode/ivHache.h"

#include "pdf/decode/ivSHA_256.h"
#include "pdf/decode/ivSHA_384.h"
#include "pdf/decode/ivSHA_512.h"
#include "platform/ivStream.h"

namespace {
constexpr std::uint32_t kStreamChunk = 1024;
}

ivStatus ivHache::UpdateFromStream(ivStream& stream, std::int64_t count) {
    std::uint64_t left;
    if (count == -1) {
        std::uint64_t size = stream.Size(), pos = stream.Position();
        left = pos < size ? size - pos : 0;
    } else if (count < 0) {
        return kInvalidArg;
    } else {
        left = static_cast<std::uint64_t>(count);
    }
    std::array<std::uint8_t, kStreamChunk> chunk;
    while (left) {
        auto want = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, kStreamChunk));
        std::uint32_t got = 0;
        ivStatus st = stream.Read(chunk.data(), want, &got);
        got = std::min(got, want);
        Update(std::span<const std::uint8_t>(chunk.data(), got));
        if (Failed(st)) return st;
        if (got == 0) return kRemark;
        left -= got;
    }
    return kOk;
}

ivStatus ivHache::Final(std::uint8_t* out, std::uint32_t* size) {
    if (!size) return kInvalidArg;
    const std::uint32_t room = *size;
    *size = DigestSize();
    if (!out) return kRemark;
    if (room < DigestSize()) return kFail;
    Finish(out);
    return kOk;
}

std::unique_ptr<ivHache> CreateSha(int bits) {
    switch (bits) {
        case 256:
            return std::make_unique<ivSHA_256>();
        case 384:
            return std::make_unique<ivSHA_384>();
        case 512:
            return std::make_unique<ivSHA_512>();
        default:
            return nullptr;
    }
}
