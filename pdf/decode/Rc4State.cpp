#include "pdf/decode/Rc4State.h"

#include <utility>

void Rc4State::Reset() {
    for (std::uint32_t k = 0; k < 256; ++k) m_s[k] = static_cast<std::uint8_t>(k);
    m_i = m_j = 0;
}

ivStatus Rc4State::SetKey(std::span<const std::uint8_t> key) {
    Reset();
    if (key.empty()) return kInvalidArg;
    std::uint32_t j = 0;
    for (std::uint32_t k = 0; k < 256; ++k) {
        j = (j + m_s[k] + key[k % key.size()]) & 0xff;
        std::swap(m_s[k], m_s[j]);
    }
    return kOk;
}

void Rc4State::Process(std::span<std::uint8_t> data) {
    std::uint32_t i = m_i, j = m_j;
    for (std::uint8_t& byte : data) {
        i = (i + 1) & 0xff;
        j = (j + m_s[i]) & 0xff;
        std::swap(m_s[i], m_s[j]);
        byte ^= m_s[(m_s[i] + m_s[j]) & 0xff];
    }
    m_i = i;
    m_j = j;
}
