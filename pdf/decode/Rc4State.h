#pragma once
#include <array>
#include <cstdint>
#include <span>

#include "platform/ivStatus.h"

// The RC4 stream cipher. The state runs on across Process calls, so a stream decrypted in
// chunks gets one continuous keystream. Encryption and decryption are the same operation.
class Rc4State {
public:
    Rc4State() { Reset(); }
    explicit Rc4State(std::span<const std::uint8_t> key) { (void)SetKey(key); }

    // Key scheduling; every key byte counts, whatever the length. An empty key returns
    // kInvalidArg and leaves the identity permutation, so Process stays defined.
    ivStatus SetKey(std::span<const std::uint8_t> key);
    // XORs the keystream into `data` in place.
    void Process(std::span<std::uint8_t> data);

private:
    void Reset();

    std::array<std::uint8_t, 256> m_s;
    std::uint32_t m_i = 0, m_j = 0;  // always within 0-255
};
