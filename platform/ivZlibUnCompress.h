#pragma once
#include <array>
#include <memory>

#include "platform/ivStream.h"

// A stream that inflates zlib data (with its header) from another stream as it is read.
// Data that simply stops before the end of the compressed stream ends the output there;
// corrupt data ends it with a read failure whose ErrorText() tells why.
class ivZlibUnCompress final : public ivStream {
public:
    // Null when zlib cannot be set up.
    static ivRef<ivZlibUnCompress> Create(ivRef<ivStream> source);
    ~ivZlibUnCompress() override;

    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override;
    ivStatus Write(const void* buffer, std::uint32_t count, std::uint32_t* written) override;
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override;
    std::uint64_t Position() const override { return m_produced; }
    std::uint64_t Size() const override { return m_produced; }
    ivStatus SetSize(std::uint64_t size) override;
    std::string ErrorText() const override { return m_error; }

    struct State;
    ivZlibUnCompress(ivRef<ivStream> source, std::unique_ptr<State> state);

private:
    ivRef<ivStream> m_source;
    std::unique_ptr<State> m_state;
    std::uint64_t m_produced = 0;
    bool m_done = false;
    std::string m_error;
};
