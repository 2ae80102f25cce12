#include <libcrossplatform/common/EncryptedString.h>

#include <unistd.h>

#include <atomic>
#include <exception>
#include <functional>
#include <iostream>
#include <random>

#include <pcg_random.hpp>

#include <libcrossplatform/common/internal/CredentialEnvelope.h>
#include <libcrossplatform/common/internal/CredentialText.h>

#include "CredentialKey.h"  // written at configure time, seen by this unit alone

namespace {

static_assert(EncryptedString::MAX_BYTES == Veltra::ENVELOPE_MAX_PAYLOAD);

constexpr std::size_t SHORTEST_TEXT_FORM = 61;

std::atomic<bool> debugOn{false};
std::atomic<bool> verboseOn{false};

Veltra::CredentialTrace trace() {
  return {debugOn ? &std::cout : nullptr, verboseOn ? &std::cout : nullptr};
}

// The generator of this thread, seeded by the system, and seeded again in a forked process: it must not draw the same
// numbers as its parent.
pcg32& seededGenerator() {
  thread_local pcg32 generator;
  thread_local pid_t seededIn = 0;
  const pid_t process = getpid();
  if (seededIn != process) {
    pcg_extras::seed_seq_from<std::random_device> seed("default");
    generator.seed(seed);
    seededIn = process;
  }
  return generator;
}

std::string encrypt(gsl::span<const uint8_t> payload) {
  try {
    return Veltra::sealCredential(payload, CREDENTIAL_KEY, std::ref(seededGenerator()), trace());
  } catch (const std::exception&) {  // the random device, on the first use in a thread or process
    return {};
  }
}

Veltra::SecretBytes decrypt(const std::string& text) {
  Veltra::SecretBytes payload;
  if (!Veltra::openCredential(text, CREDENTIAL_KEY, trace(), payload)) return {};
  return payload;
}

}  // namespace

std::string EncryptedString::Encrypt(const std::string& text) {
  return encrypt({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

std::string EncryptedString::EncryptBlob(const std::vector<uint8_t>& data) {
  return encrypt(data);
}

std::string EncryptedString::Decrypt(const std::string& text) {
  if (text.size() < SHORTEST_TEXT_FORM) return text;
  const Veltra::SecretBytes payload = decrypt(text);
  return std::string(payload.begin(), payload.end());
}

std::vector<uint8_t> EncryptedString::DecryptBlob(const std::string& text) {
  const Veltra::SecretBytes payload = decrypt(text);
  return std::vector<uint8_t>(payload.begin(), payload.end());
}

uint32_t EncryptedString::crc32(uint32_t crc, const void* data, uint32_t len) {
  return Veltra::credentialCrc32(crc, data, len);
}

void EncryptedString::debug() {
  debugOn = true;
}

void EncryptedString::verbose() {
  debugOn = true;
  verboseOn = true;
}
