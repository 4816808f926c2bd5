#include "platform/ivStream.h"

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
ivStatus ReadAllInto(ivStream& from, Container& out) {
    std::array<std::uint8_t, 16384> chunk;
    for (;;) {
        std::uint32_t got = 0;
        ivStatus st = from.Read(chunk.data(), chunk.size(), &got);
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
