#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <libcrossplatform/logging/Export.h>

/// Turns a short secret into printable text for a settings file, and back. The text form hides the secret's length and
/// protects it with a check value; whoever has this library can read it, see docs/credentials.md.
///
/// Every operation may run on any thread. None throws, but Decrypt and DecryptBlob std::bad_alloc, and none logs;
/// diagnostics go to standard output only after one of the flags below was turned on.
class VELTRA_EXPORT EncryptedString {
 public:
  static constexpr std::size_t MAX_BYTES = 65535;  ///< of a secret

  EncryptedString() = delete;

  ///@{
  /// The text form of a secret, a different one at each call.
  /// @return at least 64 characters in lines of 64, no line break at the end; empty when the secret has more than
  ///         MAX_BYTES or the system has no random numbers
  static std::string Encrypt(const std::string& text);
  static std::string EncryptBlob(const std::vector<uint8_t>& data);
  ///@}

  /// The secret of a text form.
  /// @return the secret. A text of up to 60 characters is not a text form and is returned unchanged: a password stored
  ///         before secrets were encrypted, or typed in. Empty when a longer text was changed or belongs to another
  ///         key, to be taken as "no value"; empty as well for the text form of an empty secret
  static std::string Decrypt(const std::string& text);

  /// As Decrypt, for texts of any length: a short one is not a text form and gives an empty text.
  static std::vector<uint8_t> DecryptBlob(const std::string& text);

  /// CRC-32 (polynomial EDB88320, reflected) of `len` bytes, continued from `crc`: 0 starts the common CRC-32, the text
  /// form starts at FFFFFFFF.
  static uint32_t crc32(uint32_t crc, const void* data, uint32_t len);

  /// From now on, in the whole process, a refused text prints the reason to standard output.
  static void debug();

  /// As debug, and dumps every stage in hexadecimal: secrets become readable on standard output.
  static void verbose();
};
