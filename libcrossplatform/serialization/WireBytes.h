#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>
#include <cstring>
#include <type_traits>

/// Inlined in every build type: these are the few instructions all encoding and decoding is made of.
#define VELTRA_ALWAYS_INLINE inline __attribute__((always_inline))

namespace Marshal {

/// The unsigned integer that carries a wire kind's bits.
template <std::size_t BYTES>
struct WireBits;
/// @cond the four widths
template <>
struct WireBits<1> {
  using Type = uint8_t;
};
template <>
struct WireBits<2> {
  using Type = uint16_t;
};
template <>
struct WireBits<4> {
  using Type = uint32_t;
};
template <>
struct WireBits<8> {
  using Type = uint64_t;
};
/// @endcond

/// Turns the machine's order of bytes into big-endian, and back: one instruction, where g++ compiles a loop to a
/// load and a shift for each byte.
template <class Bits>
VELTRA_ALWAYS_INLINE Bits swapToBig(Bits bits) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  if constexpr (sizeof(Bits) == 2) return __builtin_bswap16(bits);
  if constexpr (sizeof(Bits) == 4) return __builtin_bswap32(bits);
  if constexpr (sizeof(Bits) == 8) return __builtin_bswap64(bits);
#endif
  return bits;
}

/// Stores a wire kind big-endian: integers in two's complement, floats as IEEE bits, a bool as 0 or 1.
template <class T>
VELTRA_ALWAYS_INLINE void storeBig(uint8_t* to, T value) {
  using Bits = typename WireBits<sizeof(T)>::Type;
  Bits bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  bits = swapToBig(bits);
  std::memcpy(to, &bits, sizeof bits);
}

/// Loads what storeBig() stored. A bool is true for every byte but 0.
template <class T>
VELTRA_ALWAYS_INLINE T loadBig(const uint8_t* from) {
  if constexpr (std::is_same_v<T, bool>) {
    return *from != 0;
  } else {
    using Bits = typename WireBits<sizeof(T)>::Type;
    Bits bits = 0;
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): a null window is empty, so its caller never gets here
    std::memcpy(&bits, from, sizeof bits);
    bits = swapToBig(bits);
    T value{};
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }
}

///@{
/// The little-endian 32-bit words of the container: a compressed payload's original size, a file's total length.
VELTRA_ALWAYS_INLINE void storeLittle32(uint8_t* to, uint32_t value) {
  for (int i = 0; i < 4; ++i) to[i] = static_cast<uint8_t>(value >> (8 * i));
}

VELTRA_ALWAYS_INLINE uint32_t loadLittle32(const uint8_t* from) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value |= static_cast<uint32_t>(from[i]) << (8 * i);
  return value;
}
///@}

}  // namespace Marshal
