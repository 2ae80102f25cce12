#pragma once

#include <iosfwd>
#include <string>

#include <gsl/span>

#include <libcrossplatform/common/internal/CredentialCipher.h>
#include <libcrossplatform/common/internal/CredentialEnvelope.h>
#include <libcrossplatform/common/internal/SecretBytes.h>

namespace Veltra {

/// Where diagnostics go. Null: nowhere; `verbose` shows secrets.
struct CredentialTrace {
  std::ostream* debug = nullptr;    ///< why a text was refused
  std::ostream* verbose = nullptr;  ///< hex dumps of every stage
};

/// Turns a secret into its stored text: envelope, AES-128-CBC, base64 without the closing line break.
/// @return at least 64 characters; empty when the payload is longer than 65535 bytes or the cipher is not available
std::string sealCredential(gsl::span<const uint8_t> payload, const CredentialKey& key, const RandomWords& random,
                           const CredentialTrace& trace);

/// Turns a stored text back into the secret.
/// @param payload  receives the secret, which may be empty; emptied on failure
/// @return false when any layer of the text is not what sealCredential makes under this key
[[nodiscard]] bool openCredential(const std::string& text, const CredentialKey& key, const CredentialTrace& trace,
                                  SecretBytes& payload);

/// Prints bytes in lines of 16: offset, hexadecimal digits with a gap in the middle, and the characters, which end at
/// column 79. Trailing spaces are omitted.
void hexDump(std::ostream& out, gsl::span<const uint8_t> bytes);

}  // namespace Veltra
