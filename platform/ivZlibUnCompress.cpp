#include "platform/ivZlibUnCompress.h"

#include <zlib.h>

struct ivZlibUnCompress::State {
    z_stream z{};
    std::array<std::uint8_t, 16384> input;
    bool sourceEnded = false;
};

ivRef<ivZlibUnCompress> ivZlibUnCompress::Create(ivRef<ivStream> source) {
    auto state = std::make_unique<State>();
    if (inflateInit(&state->z) != Z_OK) return nullptr;
    return std::make_shared<ivZlibUnCompress>(std::move(source), std::move(state));
}

ivZlibUnCompress::ivZlibUnCompress(ivRef<ivStream> source, std::unique_ptr<State> state)
    : m_source(std::move(source)), m_state(std::move(state)) {}

ivZlibUnCompress::~ivZlibUnCompress() {
    inflateEnd(&m_state->z);
}

ivStatus ivZlibUnCompress::Read(void* buffer, std::uint32_t count, std::uint32_t* read) {
    if (read) *read = 0;
    if (!m_error.empty()) return kFail;
    if (m_done || count == 0) return kRemark;
    z_stream& z = m_state->z;
    z.next_out = static_cast<Bytef*>(buffer);
    z.avail_out = count;
    while (z.avail_out > 0) {
        if (z.avail_in == 0 && !m_state->sourceEnded) {
            std::uint32_t got = 0;
            ivStatus st = m_source->Read(m_state->input.data(),
                                         static_cast<std::uint32_t>(m_state->input.size()), &got);
            if (Failed(st) || got == 0) m_state->sourceEnded = true;
            z.next_in = m_state->input.data();
            z.avail_in = got;
        }
        int rc = inflate(&z, Z_NO_FLUSH);
        if (rc == Z_STREAM_END) {
            m_done = true;
            break;
        }
        if (rc == Z_BUF_ERROR && z.avail_in == 0 && m_state->sourceEnded) {
            m_done = true;  // the compressed data stops short: keep what it gave
            break;
        }
        if (rc != Z_OK && rc != Z_BUF_ERROR) {
            m_error = z.msg ? z.msg : "inflate failed";
            break;
        }
    }
    std::uint32_t n = count - z.avail_out;
    m_produced += n;
    if (read) *read = n;
    if (n) return kOk;
    return m_error.empty() ? kRemark : kFail;
}

ivStatus ivZlibUnCompress::Write(const void*, std::uint32_t, std::uint32_t* written) {
    if (written) *written = 0;
    return kWrongType;
}

std::int64_t ivZlibUnCompress::Seek(std::int64_t offset, ivSeekOrigin origin) {
    // Only "where am I" is answerable on a stream that inflates forward.
    if (origin == ivSeekOrigin::Current && offset == 0) return static_cast<std::int64_t>(m_produced);
    return kWrongType;
}

ivStatus ivZlibUnCompress::SetSize(std::uint64_t) {
    return kWrongType;
}
