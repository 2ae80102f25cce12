#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gsl/span>

#include <libcrossplatform/common/internal/SecretBytes.h>

namespace Veltra {

/// AES-128 key, used as initialisation vector as well.
using CredentialKey = std::array<uint8_t, 16>;

/// Encrypts with AES-128 in CBC mode and PKCS#7 padding.
/// @return up to 16 bytes more than `plain`; empty when the cipher is not available
std::vector<uint8_t> encryptCbc(gsl::span<const uint8_t> plain, const CredentialKey& key);

/// The outcome of decryptCbc.
struct CbcPlain {
  enum Status : uint8_t {
    STATUS_OK,
    STATUS_UPDATE_FAILED,  ///< the cipher is not available or refused the bytes
    STATUS_FINAL_FAILED,   ///< not whole blocks, or wrong padding
  };
  Status status;
  SecretBytes bytes;        ///< empty unless STATUS_OK
  std::size_t updateBytes;  ///< part of `bytes` from the update step
  std::size_t finalBytes;   ///< part of `bytes` from the final step
};

/// Reverses encryptCbc. Leaves OpenSSL's error queue as it was.
CbcPlain decryptCbc(gsl::span<const uint8_t> encrypted, const CredentialKey& key);

/// Base64 with a line break after every 64 characters and after the last.
/// @return empty when there is nothing to encode
std::string encodeBase64(gsl::span<const uint8_t> bytes);

/// Reverses encodeBase64, wherever the line breaks ("\n" or "\r\n") stand. Accepts nothing but the text the bytes
/// encode to: no space, no other character, no spare bits set in the last character.
/// @return empty when the text is anything else
std::vector<uint8_t> decodeBase64(const std::string& text);

}  // namespace Veltra
