#pragma once
#include <cstdint>

// 32-bit status codes shared by every layer: negative values are failures.
using ivStatus = std::int32_t;

constexpr ivStatus kOk = 0;
constexpr ivStatus kRemark = 1;  // success with a remark, or nothing to do
constexpr ivStatus kFail = ivStatus(0x80004005u);
constexpr ivStatus kOutOfMemory = ivStatus(0x8007000Eu);
constexpr ivStatus kInvalidArg = ivStatus(0x80070057u);
constexpr ivStatus kNotFound = ivStatus(0x80060002u);
constexpr ivStatus kWrongType = ivStatus(0x80060003u);  // also "not supported"
constexpr ivStatus kCancelled = ivStatus(0x80060005u);
constexpr ivStatus kMissing = ivStatus(0x80060006u);

[[nodiscard]] constexpr bool Failed(ivStatus s) {
    return s < 0;
}
[[nodiscard]] constexpr bool Succeeded(ivStatus s) {
    return s >= 0;
}
