#pragma once
#include <cstdint>
#include <new>
#include <string>
#include <span>
#include <vector>

#include "platform/ivStream.h"

// Byte plumbing shared by the codecs: the libraries want whole buffers in and hand whole
// buffers (or callbacks) out, while the rest of the system speaks ivStream.

// The whole of `data`: its own memory when it has some, otherwise everything read from the
// current position into `storage`. A read error is returned as it came.
ivStatus ivWholeData(ivStream& data, std::vector<std::uint8_t>& storage, std::span<const std::uint8_t>* out);

// Reads the whole of `data` and hands it to `decode` (a callable taking the bytes and returning
// a status). A read error leaves the stream's text in `error`; running out of memory gives
// "Out of memory" and kOutOfMemory.
template <class Decode>
ivStatus ivDecodeWholeData(ivStream& data, std::string& error, Decode&& decode) {
    try {
        std::vector<std::uint8_t> storage;
        std::span<const std::uint8_t> bytes;
        if (ivStatus st = ivWholeData(data, storage, &bytes); Failed(st)) {
            error = data.ErrorText();
            return st;
        }
        return decode(bytes);
    } catch (const std::bad_alloc&) {
        error = "Out of memory";
        return kOutOfMemory;
    }
}

// Writes every byte; a short write counts as a failure. Never throws, so it may run inside
// a C library's callback.
ivStatus ivWriteAll(ivStream& file, std::span<const std::uint8_t> bytes) noexcept;
