#pragma once
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/ivStatus.h"

class ivStream;

// One interface over MD5 and the SHA-2 family, so that the AES-256 password hash can pick its
// function at run time. An object starts in the initial state; Final returns it there.
class ivHache {
public:
    virtual ~ivHache() = default;

    virtual ivStatus Init() = 0;
    virtual ivStatus Update(std::span<const std::uint8_t> data) = 0;
    // Absorbs `count` bytes read from `stream` in chunks of up to 1,024 bytes; -1 means up to
    // the end. kRemark when the stream ran dry first (what came is absorbed), a read error's
    // code after absorbing what came before it, kInvalidArg for another negative count.
    virtual ivStatus UpdateFromStream(ivStream& stream, std::int64_t count);
    // With `out` holding at least DigestSize() bytes (in `*size`): writes the digest, sets
    // `*size` to the digest size, returns kOk and resets for the next message. Otherwise only
    // `*size` is set: kRemark when `out` is null (a size query), kFail when it is too small;
    // the message absorbed so far is kept in both cases.
    virtual ivStatus Final(std::uint8_t* out, std::uint32_t* size);
    virtual std::uint32_t DigestSize() const = 0;

protected:
    // Pads the message, writes DigestSize() bytes to `out` and calls Init().
    virtual void Finish(std::uint8_t* out) = 0;

    // Appends `data` to a block of `used` buffered bytes and hands every complete block to
    // `compress`; whole blocks are taken straight from `data` without a copy.
    template <std::size_t N, class Compress>
    static void Absorb(std::span<const std::uint8_t> data, std::array<std::uint8_t, N>& block,
                       std::size_t& used, Compress compress);
};

// SHA-256, SHA-384 or SHA-512 by digest size in bits; null for any other value.
std::unique_ptr<ivHache> CreateSha(int bits);

template <std::size_t N, class Compress>
void ivHache::Absorb(std::span<const std::uint8_t> data, std::array<std::uint8_t, N>& block,
                     std::size_t& used, Compress compress) {
    if (used) {
        std::size_t take = std::min(N - used, data.size());
        std::copy_n(data.begin(), take, block.begin() + static_cast<std::ptrdiff_t>(used));
        used += take;
        data = data.subspan(take);
        if (used < N) return;
        compress(std::span<const std::uint8_t, N>(block));
        used = 0;
    }
    for (; data.size() >= N; data = data.subspan(N)) compress(data.template first<N>());
    std::copy(data.begin(), data.end(), block.begin());
    used = data.size();
}
