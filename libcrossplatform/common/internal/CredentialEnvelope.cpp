#include <libcrossplatform/common/internal/CredentialEnvelope.h>

#include <algorithm>

#include <libcrossplatform/common/PFileHeader.h>

namespace Veltra {
namespace {

constexpr uint32_t MIN_OFFSET = 5;
constexpr uint32_t MAX_OFFSET = 26;
constexpr std::size_t OFFSET_AT = 1;
constexpr std::size_t LENGTH_AT = 3;  // two bytes
constexpr std::size_t CHECK_BYTES = 4;

// The register of the check value starts at zero, because the start value is inverted on entry: this is not the common
// CRC-32 of the bytes, and every stored text relies on it.
constexpr uint32_t CHECK_START = 0xFFFFFFFF;

uint32_t checkValueOf(const uint8_t* envelope, std::size_t size) {
  return credentialCrc32(CHECK_START, envelope, static_cast<uint32_t>(size - CHECK_BYTES));
}

}  // namespace

uint32_t drawUniform(const RandomWords& random, uint32_t lo, uint32_t hi) {
  const uint32_t range = hi - lo + 1;
  const uint32_t share = 4294967295U / range;
  uint32_t word = random();
  while (word >= share * range) word = random();
  return lo + word / share;
}

uint32_t credentialCrc32(uint32_t crc, const void* data, uint32_t size) {
  return data == nullptr ? crc : PFile::crc32Of(static_cast<const uint8_t*>(data), size, crc);
}

SecretBytes buildEnvelope(gsl::span<const uint8_t> payload, const RandomWords& random) {
  if (payload.size() > ENVELOPE_MAX_PAYLOAD) return {};
  const uint32_t offset = drawUniform(random, MIN_OFFSET, MAX_OFFSET);
  SecretBytes envelope((payload.size() + 47) & 0xFFFF0);
  for (uint8_t& byte : envelope) byte = static_cast<uint8_t>(drawUniform(random, 0, 255));

  envelope[OFFSET_AT] = static_cast<uint8_t>(offset);
  envelope[LENGTH_AT] = static_cast<uint8_t>(payload.size() & 0xFF);
  envelope[LENGTH_AT + 1] = static_cast<uint8_t>(payload.size() >> 8);
  std::copy(payload.begin(), payload.end(), envelope.begin() + static_cast<std::ptrdiff_t>(offset));

  const uint32_t check = checkValueOf(envelope.data(), envelope.size());
  uint8_t* const stored = envelope.data() + envelope.size() - CHECK_BYTES;
  for (std::size_t i = 0; i < CHECK_BYTES; ++i) stored[i] = static_cast<uint8_t>(check >> (24 - 8 * i));
  return envelope;
}

EnvelopeContent parseEnvelope(gsl::span<const uint8_t> envelope) {
  EnvelopeContent content{EnvelopeContent::FAULT_CHECK_VALUE, 0, 0, 0};
  if (envelope.size() < LENGTH_AT + 2 + CHECK_BYTES) return content;

  content.checkValue = checkValueOf(envelope.data(), envelope.size());
  uint32_t stored = 0;
  for (const uint8_t byte : envelope.last(CHECK_BYTES)) stored = stored << 8 | byte;
  if (content.checkValue != stored) return content;

  content.offset = envelope[OFFSET_AT];
  content.length = envelope[LENGTH_AT] + 256 * envelope[LENGTH_AT + 1];
  // Signed: an envelope shorter than its offset has negative room, so nothing fits.
  const int32_t room = static_cast<int32_t>(envelope.size()) - content.offset;
  const bool good = content.offset >= static_cast<int32_t>(MIN_OFFSET) &&
                    content.offset <= static_cast<int32_t>(MAX_OFFSET) && content.length <= room;
  content.fault = good ? EnvelopeContent::FAULT_NONE : EnvelopeContent::FAULT_HEADER;
  return content;
}

}  // namespace Veltra
