#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <cstdint>

#include <libcrossplatform/logging/Export.h>

namespace Dump {

/// Receives what records dump. The order of the virtual operations is fixed. A custom formatter only needs the
/// pure ones; without text() it does not show the records that dump themselves as one text.
class VELTRA_EXPORT IFormatter {
 public:
  virtual ~IFormatter();
  /// A whole text, which may have several lines. `level` is the dump level it was made at.
  virtual void text(const char* text, int level);
  ///@{
  /// One member and its value. `name` and `text` are borrowed for the call, UTF-8 or not, and never null.
  virtual void field(const char* name, bool value) = 0;
  virtual void field(const char* name, uint16_t value) = 0;
  virtual void field(const char* name, uint32_t value) = 0;
  virtual void field(const char* name, float value) = 0;
  virtual void field(const char* name, const char* text) = 0;
  ///@}
  /// What follows belongs to a member or record of that name, until the matching endObject(). Nests.
  virtual void beginObject(const char* name) = 0;
  /// Ends what the last beginObject() began.
  virtual void endObject() = 0;
  /// A run of bytes; unless overridden, a text field with two hexadecimal digits per byte.
  virtual void field(const char* name, const uint8_t* bytes, uint32_t size);
};

}  // namespace Dump
