#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/ivStatus.h"

// Streams are shared: whoever holds an ivRef keeps the stream alive.
template <class T>
using ivRef = std::shared_ptr<T>;

enum class ivSeekOrigin { Begin, Current, End };

// The byte stream every reader and decoder works on.
class ivStream {
public:
    virtual ~ivStream() = default;

    // Reads up to `count` bytes. kOk when at least one byte came, kRemark when none did
    // (end of data), a failure code on a read error. `*read` always receives the count.
    virtual ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) = 0;
    virtual ivStatus Write(const void* buffer, std::uint32_t count, std::uint32_t* written) = 0;
    // Returns the new position, or a negative status code.
    virtual std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) = 0;
    virtual std::uint64_t Position() const = 0;
    virtual std::uint64_t Size() const = 0;
    virtual ivStatus SetSize(std::uint64_t size) = 0;
    // Description of the last read error, empty when none is known. Wrapping streams
    // forward this to the stream they wrap.
    virtual std::string ErrorText() const { return {}; }
    // The whole content when it sits in memory already, so readers can skip a copy.
    virtual std::span<const std::uint8_t> Contiguous() const { return {}; }
};

// Copies in chunks of 8 KiB until the first short read; returns the bytes copied.
std::uint64_t ivCopyStream(ivStream& from, ivStream& to);

// Reads everything from the current position to the end; what came before a read error
// stays in `out`.
ivStatus ivReadAll(ivStream& from, std::string& out);
ivStatus ivReadAll(ivStream& from, std::vector<std::uint8_t>& out);
// At most `limit` bytes; kRemark when more data was left unread.
ivStatus ivReadAll(ivStream& from, std::vector<std::uint8_t>& out, std::uint64_t limit);
