#include "codecs/ivCodecIo.h"

#include <algorithm>
#include <new>

ivStatus ivWholeData(ivStream& data, std::vector<std::uint8_t>& storage, std::span<const std::uint8_t>* out) {
    std::span<const std::uint8_t> whole = data.Contiguous();
    if (!whole.empty()) {
        *out = whole;
        return kOk;
    }
    storage.clear();
    ivStatus st = ivReadAll(data, storage);
    *out = storage;
    return Failed(st) ? st : kOk;
}

ivStatus ivWriteAll(ivStream& file, std::span<const std::uint8_t> bytes) noexcept {
    // A memory stream grows its vector and may run out of memory; that must not escape
    // into the C code that called us.
    try {
        while (!bytes.empty()) {
            auto count = static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), 1u << 30));
            std::uint32_t written = 0;
            ivStatus st = file.Write(bytes.data(), count, &written);
            if (Failed(st)) return st;
            if (written != count) return kFail;
            bytes = bytes.subspan(count);
        }
        return kOk;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    } catch (...) {
        return kFail;
    }
}
