#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <libcrossplatform/serialization/ByteStreamCounter.h>
#include <libcrossplatform/serialization/ISerializable.h>
#include <libcrossplatform/serialization/RecordShape.h>

namespace Marshal {

/// Stores fields into a stream: straight into its window when it offers one, through its operations otherwise.
class StreamOut {
 public:
  /// @param stream  borrowed; what was stored into its window is its own when the walker is destroyed
  explicit StreamOut(IObjectWriter& stream) : _stream(stream), _window(stream.window(0)) {}
  ~StreamOut() { commit(); }
  StreamOut(const StreamOut&) = delete;
  StreamOut& operator=(const StreamOut&) = delete;

  /// False where every field is an operation of the stream.
  bool hasWindow() const { return _window.cursor != nullptr; }

  ///@{
  /// A number big-endian; bytes as they are; a text with its `u32` byte count before it.
  template <class T>
  VELTRA_ALWAYS_INLINE void put(T value) {
    if (static_cast<std::size_t>(_window.end - _window.cursor) < sizeof(T)) {
      _window = putSlowly(_stream, _window, value);
      return;
    }
    storeBig(_window.cursor, value);
    _window.cursor += sizeof(T);
  }

  void bytes(const void* data, uint32_t size) {
    const auto* const from = static_cast<const uint8_t*>(data);
    if (static_cast<std::size_t>(_window.end - _window.cursor) < size) _window = refilled(_stream, _window, size);
    if (static_cast<std::size_t>(_window.end - _window.cursor) >= size && _window.cursor != nullptr) {
      if (size != 0) std::memcpy(_window.cursor, from, size);
      _window.cursor += size;
    } else {
      _stream.writeBytes(from, size);
    }
  }

  void text(const std::string& value) {
    if (_window.cursor == nullptr) {
      _stream.writeString(value);
      return;
    }
    put(static_cast<uint32_t>(value.size()));
    bytes(value.data(), static_cast<uint32_t>(value.size()));
  }
  ///@}

  /// A nested record through its own serialize().
  void record(ISerializable& nested) {
    commit();
    nested.serialize(_stream);
    _window = _stream.window(0);
  }

  /// A flat record in place, header and all, which saves the stream's operations that record() needs. False, with
  /// nothing written, where those operations could be seen: in a caller's own stream.
  template <class Record>
  VELTRA_ALWAYS_INLINE bool flat(Record& nested);

 private:
  void commit() {
    if (_window.cursor != nullptr) _stream.advanceTo(_window.cursor);
  }

  // The window goes in and out by value, so that the cursor can stay in a register between two fields.
  __attribute__((noinline, cold)) static WriteWindow refilled(IObjectWriter& stream, WriteWindow window,
                                                              uint32_t need) {
    if (window.cursor != nullptr) stream.advanceTo(window.cursor);
    return stream.window(need);
  }

  template <class T>
  __attribute__((noinline, cold)) static WriteWindow putSlowly(IObjectWriter& stream, WriteWindow window, T value) {
    if (window.cursor != nullptr) {
      window = refilled(stream, window, sizeof(T));
      if (window.cursor != nullptr) {
        storeBig(window.cursor, value);
        window.cursor += sizeof(T);
        return window;
      }
    }
    writeTo(stream, value);
    return {};
  }

  static void writeTo(IObjectWriter& stream, bool value) { stream.writeBool(value); }
  static void writeTo(IObjectWriter& stream, uint8_t value) { stream.writeUInt8(value); }
  static void writeTo(IObjectWriter& stream, int8_t value) { stream.writeInt8(value); }
  static void writeTo(IObjectWriter& stream, uint16_t value) { stream.writeUInt16(value); }
  static void writeTo(IObjectWriter& stream, int16_t value) { stream.writeInt16(value); }
  static void writeTo(IObjectWriter& stream, uint32_t value) { stream.writeUInt32(value); }
  static void writeTo(IObjectWriter& stream, int32_t value) { stream.writeInt32(value); }
  static void writeTo(IObjectWriter& stream, int64_t value) { stream.writeInt64(value); }
  static void writeTo(IObjectWriter& stream, float value) { stream.writeFloat(value); }

  IObjectWriter& _stream;
  WriteWindow _window;
};

/// Only adds up what StreamOut would store; texts are counted by their size. What a list of fields adds up to without
/// its texts is a constant to the compiler.
class CountOut {
 public:
  ///@{
  /// Counts what the same operation of StreamOut stores.
  template <class T>
  VELTRA_ALWAYS_INLINE void put(T) {
    _fixed += sizeof(T);
  }
  VELTRA_ALWAYS_INLINE void bytes(const void*, uint32_t size) { _texts += size; }
  VELTRA_ALWAYS_INLINE void text(const std::string& value) {
    _fixed += sizeof(uint32_t);
    _texts += value.size();
  }
  void record(ISerializable& nested) {
    ByteStreamCounter counter;
    nested.serialize(counter);
    _texts += counter.size();
  }
  template <class Record>
  VELTRA_ALWAYS_INLINE bool flat(Record& nested);
  ///@}

  std::size_t fixed() const { return _fixed; }                      ///< without the bytes of texts and nested records
  std::size_t size() const { return _fixed + _texts; }              ///< all bytes
  uint32_t total() const { return static_cast<uint32_t>(size()); }  ///< size() as the wire has it, cut to 32 bits

 private:
  std::size_t _fixed = 0;
  std::size_t _texts = 0;
};

/// Stores fields into the caller's buffer, which must have room for all of them.
class FixedOut {
 public:
  ///@{
  /// A buffer, and what StreamOut stores, without a look at its end.
  explicit FixedOut(uint8_t* cursor) : _cursor(cursor) {}
  template <class T>
  VELTRA_ALWAYS_INLINE void put(T value) {
    storeBig(_cursor, value);
    _cursor += sizeof(T);
  }
  VELTRA_ALWAYS_INLINE void text(const std::string& value) {
    put(static_cast<uint32_t>(value.size()));
    std::memcpy(_cursor, value.data(), value.size());
    _cursor += value.size();
  }
  ///@}

 private:
  uint8_t* _cursor;
};

/// Walks a record's field list and writes or counts: one verb for each wire kind, the same verbs as FieldReader. The
/// names are for the reader; they are ignored here.
template <class Out>
class FieldEncoder : public Out {
 public:
  /// @param classVersion  what the record is written as
  /// @param args          of the `Out`
  template <class... Args>
  explicit FieldEncoder(uint8_t classVersion, Args&&... args)
      : Out(std::forward<Args>(args)...), _version(classVersion) {}

  static constexpr bool READING = false;        ///< for lists whose directions differ
  uint8_t version() const { return _version; }  ///< class version being written
  bool ok() const { return true; }              ///< as FieldReader::ok(); writing goes on whatever failed

  ///@{
  /// A number or enumeration in the width of the verb, wider values cut to it.
  VELTRA_ALWAYS_INLINE void boolean(const char*, bool v) { this->put(v); }
  template <class T>
  VELTRA_ALWAYS_INLINE void u8(const char*, const T& v) {
    this->put(static_cast<uint8_t>(v));
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i8(const char*, const T& v) {
    this->put(static_cast<int8_t>(v));
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void u16(const char*, const T& v) {
    this->put(static_cast<uint16_t>(v));
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i16(const char*, const T& v) {
    this->put(static_cast<int16_t>(v));
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void u32(const char*, const T& v) {
    this->put(static_cast<uint32_t>(v));
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i32(const char*, const T& v) {
    this->put(static_cast<int32_t>(v));
  }
  template <class T>
  VELTRA_ALWAYS_INLINE void i64(const char*, const T& v) {
    this->put(static_cast<int64_t>(v));
  }
  VELTRA_ALWAYS_INLINE void f32(const char*, float v) { this->put(v); }
  ///@}
  /// An enumeration written as `i8` that is read back as `u8` and widened.
  template <class T>
  void i8ReadAsU8(const char* name, const T& v) {
    i8(name, v);
  }

  /// A `string`: `u32` byte count and the bytes.
  VELTRA_ALWAYS_INLINE void text(const char*, const std::string& v) { Out::text(v); }
  /// The counted zero-terminated string: `u32` length plus one, the bytes, a zero byte.
  void terminatedText(const char*, const std::string& v) {
    const auto size = static_cast<uint32_t>(v.size() + 1);
    this->put(size);
    this->bytes(v.c_str(), size);
  }
  /// The counted text without terminator: `u32` length and the bytes.
  void countedText(const char*, const std::string& v) {
    this->put(static_cast<uint32_t>(v.size()));
    this->bytes(v.data(), static_cast<uint32_t>(v.size()));
  }

  /// A nested record: walked in place if it is versioned inline, otherwise by its own serialize().
  template <class Record>
  VELTRA_ALWAYS_INLINE void record(const char*, Record& nested) {
    if constexpr (IsWalkedInline<Record>::value) {
      this->put(Record::CLASS_VERSION);
      FieldAccess::walk(nested, *this);
    } else {
      Out::record(nested);
    }
  }

  /// The elements of a list. One of a subclass is written by its own serialize().
  template <class Record>
  void elements(const char* name, const std::vector<std::unique_ptr<Record>>& list) {
    for (const std::unique_ptr<Record>& element : list) {
      if (exactly<Record>(*element) == nullptr) {
        Out::record(*element);
        continue;
      }
      if constexpr (IsFlat<Record>::value) {
        if (Out::flat(*element)) continue;
      }
      record(name, *element);
    }
  }

 private:
  uint8_t _version;
};

///@{
/// What a record's list is walked with to write it, and to count its bytes.
using FieldWriter = FieldEncoder<StreamOut>;
using FieldCounter = FieldEncoder<CountOut>;
///@}

}  // namespace Marshal
