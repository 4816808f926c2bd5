#pragma once
#include <cstdint>
#include <span>
#include <vector>

#include "platform/ivStream.h"

// Byte plumbing shared by the codecs: the libraries want whole buffers in and hand whole
// buffers (or callbacks) out, while the rest of the system speaks ivStream.

// The whole of `data`: its own memory when it has some, otherwise everything read from the
// current position into `storage`. A read error is returned as it came.
ivStatus ivWholeData(ivStream& data, std::vector<std::uint8_t>& storage, std::span<const std::uint8_t>* out);

// Writes every byte; a short write counts as a failure. Never throws, so it may run inside
// a C library's callback.
ivStatus ivWriteAll(ivStream& file, std::span<const std::uint8_t> bytes) noexcept;
