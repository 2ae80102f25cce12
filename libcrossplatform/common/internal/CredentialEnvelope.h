#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include <gsl/span>

#include <libcrossplatform/common/internal/SecretBytes.h>

namespace Veltra {

/// Gives 32 uniform random bits at each call.
using RandomWords = std::function<uint32_t()>;

/// A uniform value of lo..hi, both included, by rejection: each value of the range gets the same number of words, and
/// words left over are drawn again. The range must be smaller than 2^32 - 1 values.
uint32_t drawUniform(const RandomWords& random, uint32_t lo, uint32_t hi);

/// The check value of credentials: zlib's CRC-32 continued from `crc`. Null data counts as no bytes.
uint32_t credentialCrc32(uint32_t crc, const void* data, uint32_t size);

/// The plain form of a stored secret: the secret at a random place among random bytes, closed by a check value.
///
///     byte 1           offset d of the payload, 5..26
///     bytes 3, 4       payload length, least significant byte first
///     d ..             the payload
///     last four bytes  check value over all bytes before, most significant byte first
///
/// Every other byte is random. The length is a multiple of 16, at least payload length + 32.
constexpr std::size_t ENVELOPE_MAX_PAYLOAD = 65535;

/// Builds the envelope of a payload. Draws the offset first, then one value per envelope byte.
/// @return empty when the payload is longer than ENVELOPE_MAX_PAYLOAD
SecretBytes buildEnvelope(gsl::span<const uint8_t> payload, const RandomWords& random);

/// The result of parseEnvelope, with the figures for reporting a refusal.
struct EnvelopeContent {
  enum Fault : uint8_t {
    FAULT_NONE,
    FAULT_CHECK_VALUE,  ///< the bytes do not match the stored check value; offset and length are 0
    FAULT_HEADER,       ///< the offset is not 5..26, or the payload does not fit after it
  };
  Fault fault;
  uint32_t checkValue;  ///< as computed
  int32_t offset;
  int32_t length;  ///< payload bytes, at most 65535
};

/// Checks an envelope and locates its payload.
/// @param envelope  of any length below 2 GiB
EnvelopeContent parseEnvelope(gsl::span<const uint8_t> envelope);

}  // namespace Veltra
