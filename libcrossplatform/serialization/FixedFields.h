#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/serialization/WireBytes.h>

namespace Marshal {

/// The verbs of fixed-width fields over one `bool get(name, value)` for each wire kind, which leaves the value as it is
/// where it cannot be read.
template <class Reader>
class FixedFields {
 public:
  static constexpr bool READING = true;  ///< for lists whose directions differ

  ///@{
  /// A number or enumeration from the width of the verb, widened with its sign; unchanged when the stream ran out.
  VELTRA_ALWAYS_INLINE void boolean(const char* name, bool& v) { self().get(name, v); }
  template <class T>
  VELTRA_ALWAYS_INLINE void u8(const char* name, T& v) {
    getAs<uint8_t>(name, v);
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i8(const char* name, T& v) {
    getAs<int8_t>(name, v);
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void u16(const char* name, T& v) {
    getAs<uint16_t>(name, v);
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i16(const char* name, T& v) {
    getAs<int16_t>(name, v);
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void u32(const char* name, T& v) {
    getAs<uint32_t>(name, v);
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i32(const char* name, T& v) {
    getAs<int32_t>(name, v);
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i64(const char* name, T& v) {
    getAs<int64_t>(name, v);
  }
  VELTRA_ALWAYS_INLINE void f32(const char* name, float& v) { self().get(name, v); }
  template <class T>
  VELTRA_ALWAYS_INLINE void i8ReadAsU8(const char* name, T& v) {
    getAs<uint8_t>(name, v);
  }
  ///@}

 private:
  Reader& self() { return static_cast<Reader&>(*this); }

  template <class Wire, class T>
  VELTRA_ALWAYS_INLINE void getAs(const char* name, T& v) {
    Wire wire{};
    // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): a signed byte on the wire is a signed number
    if (self().get(name, wire)) v = static_cast<T>(wire);
  }
};

}  // namespace Marshal
