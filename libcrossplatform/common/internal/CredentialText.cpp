#include <libcrossplatform/common/internal/CredentialText.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <ostream>

namespace Veltra {
namespace {

constexpr std::size_t BLOCK_BYTES = 16;
constexpr std::size_t MAX_TEXT = std::numeric_limits<int>::max() / 2;

// One line, in the classic notation of numbers whatever locale the stream has.
__attribute__((format(printf, 2, 3))) void printLine(std::ostream* out, const char* format, ...) {
  if (out == nullptr) return;
  char line[128];
  va_list args;
  va_start(args, format);
  std::vsnprintf(line, sizeof line, format, args);
  va_end(args);
  *out << (std::string(line) + '\n') << std::flush;
}

void dumpStage(std::ostream* out, gsl::span<const uint8_t> bytes) {
  if (out != nullptr) hexDump(*out, bytes);
}

gsl::span<const uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

}  // namespace

void hexDump(std::ostream& out, gsl::span<const uint8_t> bytes) {
  constexpr std::size_t PER_LINE = 16;
  constexpr std::size_t WIDTH = 79;
  constexpr std::size_t HEX_AT = 6;
  constexpr char DIGITS[] = "0123456789ABCDEF";
  std::string dump;
  for (std::size_t at = 0; at < bytes.size(); at += PER_LINE) {
    std::string line(WIDTH, ' ');
    for (std::size_t i = 0; i < 4; ++i) line[i] = DIGITS[at >> (12 - 4 * i) & 0xF];  // the low 16 bits of the offset
    const std::size_t count = std::min(PER_LINE, bytes.size() - at);
    for (std::size_t i = 0; i < count; ++i) {
      const uint8_t byte = bytes[at + i];
      const std::size_t column = HEX_AT + 3 * i + (i < 8 ? 0 : 1);
      line[column] = DIGITS[byte >> 4];
      line[column + 1] = DIGITS[byte & 0xF];
      line[WIDTH - PER_LINE + i] = byte >= 32 && byte <= 126 ? static_cast<char>(byte) : '.';
    }
    line.resize(line.find_last_not_of(' ') + 1);
    dump += line + '\n';
  }
  out << dump << std::flush;
}

std::string sealCredential(gsl::span<const uint8_t> payload, const CredentialKey& key, const RandomWords& random,
                           const CredentialTrace& trace) {
  const SecretBytes envelope = buildEnvelope(payload, random);
  if (envelope.empty()) return {};
  if (trace.verbose != nullptr) {
    printLine(trace.verbose, "crc=%x", static_cast<unsigned>(parseEnvelope(envelope).checkValue));
    hexDump(*trace.verbose, envelope);
  }
  const std::vector<uint8_t> encrypted = encryptCbc(envelope, key);
  dumpStage(trace.verbose, encrypted);
  std::string text = encodeBase64(encrypted);
  if (!text.empty()) text.pop_back();  // the closing line break
  dumpStage(trace.verbose, bytesOf(text));
  return text;
}

bool openCredential(const std::string& text, const CredentialKey& key, const CredentialTrace& trace,
                    SecretBytes& payload) {
  payload.clear();
  if (text.size() > MAX_TEXT) return false;
  const std::vector<uint8_t> encrypted = decodeBase64(text);
  if (encrypted.empty()) {
    printLine(trace.verbose, "base64 decoded length=%d", 0);
    return false;
  }
  dumpStage(trace.verbose, encrypted);

  const CbcPlain plain = decryptCbc(encrypted, key);
  if (plain.status != CbcPlain::STATUS_OK) {
    printLine(
        trace.debug, "%s",
        plain.status == CbcPlain::STATUS_UPDATE_FAILED ? "EVP_DecryptUpdate failed" : "EVP_DecryptFinal_ex failed");
    return false;
  }
  if (plain.updateBytes < BLOCK_BYTES || plain.bytes.size() > text.size() + 1) {
    printLine(trace.debug, "decyphered plain test is wrong  pl=%zu fl=%zu", plain.updateBytes, plain.finalBytes);
    return false;
  }
  const EnvelopeContent content = parseEnvelope(plain.bytes);
  if (content.fault == EnvelopeContent::FAULT_CHECK_VALUE) {
    printLine(trace.debug, "CRC is wrong  crc=%x", static_cast<unsigned>(content.checkValue));
    return false;
  }
  if (content.fault == EnvelopeContent::FAULT_HEADER) {
    printLine(trace.debug, "bad header data enoffset=%dcypherlen=%dp1=%zu", content.offset, content.length,
              plain.bytes.size());
    return false;
  }
  const auto first = plain.bytes.begin() + content.offset;
  payload.assign(first, first + content.length);
  return true;
}

}  // namespace Veltra
