#pragma once
#include "pdf/decode/ivSHA_512.h"

// SHA-384: SHA-512 from other initial values, cut to its first 48 bytes.
class ivSHA_384 final : public ivSHA_512 {
public:
    static constexpr std::uint32_t kDigestSize = 48;

    ivSHA_384();
};
