#include "platform/ivStream.h"

#include <algorithm>
#include <array>

std::uint64_t ivCopyStream(ivStream& from, ivStream& to) {
    std::array<std::uint8_t, 8192> chunk;
    std::uint64_t total = 0;
    for (;;) {
        std::uint32_t got = 0;
        if (Failed(from.Read(chunk.data(), chunk.size(), &got)) || got == 0) break;
        std::uint32_t written = 0;
        if (Failed(to.Write(chunk.data(), got, &written))) break;
        total += written;
        if (got < chunk.size()) break;
    }
    return total;
}

namespace {
template <class Container>
ivStatus ReadAllInto(ivStream& from, Container& out, std::uint64_t limit = std::uint64_t(-1)) {
    std::array<std::uint8_t, 16384> chunk;
    for (;;) {
        if (out.size() >= limit) {
            std::uint32_t more = 0;
            from.Read(chunk.data(), 1, &more);
            return more ? kRemark : kOk;
        }
        std::uint32_t got = 0;
        auto want = static_cast<std::uint32_t>(std::min<std::uint64_t>(chunk.size(), limit - out.size()));
        ivStatus st = from.Read(chunk.data(), want, &got);
        out.insert(out.end(), chunk.data(), chunk.data() + got);
        if (Failed(st)) return st;
        if (got == 0) return kOk;
    }
}
}  // namespace

ivStatus ivReadAll(ivStream& from, std::string& out) {
    return ReadAllInto(from, out);
}
ivStatus ivReadAll(ivStream& from, std::vector<std::uint8_t>& out) {
    return ReadAllInto(from, out);
}

ivStatus ivReadAll(ivStream& from, std::vector<std::uint8_t>& out, std::uint64_t limit) {
    return ReadAllInto(from, out, limit);
}
