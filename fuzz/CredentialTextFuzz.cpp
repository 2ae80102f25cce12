// Stored credentials: an input is taken as a stored text, as a secret, and as the envelope inside a correct encryption,
// with and without a right check value: no mutation of a text would ever get that far.
#include <libcrossplatform/common/EncryptedString.h>

#include <algorithm>
#include <sstream>

#include <libcrossplatform/common/internal/CredentialText.h>
#include <libcrossplatform/serialization/WireBytes.h>

#include "FuzzInput.h"

using namespace Veltra;

namespace {

constexpr CredentialKey KEY = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}};
constexpr std::size_t SHORTEST_TEXT = 64;

std::string withoutLineBreaks(std::string text) {
  text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }), text.end());
  return text;
}

void checkAsText(const Fuzz::Input& input) {
  const std::string text = input.text();
  const std::vector<uint8_t> blob = EncryptedString::DecryptBlob(text);
  const std::string plain = EncryptedString::Decrypt(text);
  FUZZ_CHECK(plain == (text.size() < 61 ? text : std::string(blob.begin(), blob.end())));
  const std::vector<uint8_t> decoded = decodeBase64(text);
  if (!decoded.empty()) FUZZ_CHECK(withoutLineBreaks(encodeBase64(decoded)) == withoutLineBreaks(text));
  std::ostringstream debug, verbose;
  SecretBytes payload(3);
  const bool opened = openCredential(text, KEY, {&debug, &verbose}, payload);
  FUZZ_CHECK(opened || payload.empty());
}

void checkAsSecret(const Fuzz::Input& input) {
  const std::string secret = input.text();
  std::string text = EncryptedString::Encrypt(secret);
  if (secret.size() > ENVELOPE_MAX_PAYLOAD) {
    FUZZ_CHECK(text.empty());
    return;
  }
  FUZZ_CHECK(text.size() >= SHORTEST_TEXT && text.back() != '\n');
  FUZZ_CHECK(EncryptedString::Decrypt(text) == secret);
  if (secret.empty()) return;
  // A changed character is always noticed, whichever it is.
  char& changed = text[static_cast<uint8_t>(secret[0]) * (text.size() - 1) / 255];
  changed = changed == 'A' ? 'B' : 'A';
  FUZZ_CHECK(EncryptedString::DecryptBlob(text).empty());
}

void checkAsEnvelope(const Fuzz::Bytes& envelope) {
  const EnvelopeContent content = parseEnvelope(envelope);
  const bool good = content.fault == EnvelopeContent::FAULT_NONE;
  if (good) {
    FUZZ_CHECK(content.offset >= 5 && content.offset <= 26 && content.length >= 0);
    FUZZ_CHECK(static_cast<std::size_t>(content.offset + content.length) <= envelope.size());
  }
  SecretBytes payload;
  const bool opened = openCredential(encodeBase64(encryptCbc(envelope, KEY)), KEY, {}, payload);
  FUZZ_CHECK(!opened || good);
  if (!opened) return;
  FUZZ_CHECK(std::equal(payload.begin(), payload.end(), envelope.begin() + content.offset));
  FUZZ_CHECK(payload.size() == static_cast<std::size_t>(content.length));
}

}  // namespace

void Fuzz::runTarget(const Input& input) {
  checkAsText(input);
  checkAsSecret(input);
  Fuzz::Bytes envelope = input.bytes();
  checkAsEnvelope(envelope);
  if (envelope.size() < 4) return;
  const auto checked = static_cast<uint32_t>(envelope.size() - 4);
  Marshal::storeBig(&envelope[checked], credentialCrc32(0xFFFFFFFF, envelope.data(), checked));
  checkAsEnvelope(envelope);
}
