#pragma once

#include <string>
#include <utility>

#include <libcrossplatform/serialization/ByteStreamCounter.h>
#include <libcrossplatform/serialization/ISerializable.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace Marshal {

/// Walks a record's field list, `template <class Fields> void fields(Fields&)`: its members in wire order, each named
/// once. The list is private to the record, which has this class as a friend.
class FieldAccess {
 public:
  template <class Record, class Fields>
  VELTRA_ALWAYS_INLINE static void walk(Record& record, Fields& f) {
    record.fields(f);
  }
};

/// True for a versioned inline record (FieldCodec.h) whose field list can be walked in place of its serialize().
template <class Record, class = void>
struct IsWalkedInline : std::false_type {};
template <class Record>
struct IsWalkedInline<Record, std::void_t<decltype(Record::TOO_NEW_STATUS)>> : std::true_type {};

/// Stores fields into a stream: straight into its window when it offers one, through its operations otherwise.
class StreamOut {
 public:
  explicit StreamOut(IObjectWriter& stream) : _stream(stream), _window(stream.window(0)) {}
  ~StreamOut() { commit(); }
  StreamOut(const StreamOut&) = delete;
  StreamOut& operator=(const StreamOut&) = delete;

  bool hasWindow() const { return _window.cursor != nullptr; }

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

  /// A nested record through its own serialize().
  void record(ISerializable& nested) {
    commit();
    nested.serialize(_stream);
    _window = _stream.window(0);
  }

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

/// Only adds up what StreamOut would store; texts are counted by their size.
class CountOut {
 public:
  template <class T>
  VELTRA_ALWAYS_INLINE void put(T) {
    _bytes += static_cast<uint32_t>(sizeof(T));
  }
  void bytes(const void*, uint32_t size) { _bytes += size; }
  void text(const std::string& value) { _bytes += static_cast<uint32_t>(sizeof(uint32_t) + value.size()); }
  void record(ISerializable& nested) {
    ByteStreamCounter counter;
    nested.serialize(counter);
    _bytes += counter.size();
  }
  uint32_t total() const { return _bytes; }

 private:
  uint32_t _bytes = 0;
};

/// Stores fixed-width fields into the caller's buffer, which must have room for all of them.
class FixedOut {
 public:
  explicit FixedOut(uint8_t* cursor) : _cursor(cursor) {}
  template <class T>
  VELTRA_ALWAYS_INLINE void put(T value) {
    storeBig(_cursor, value);
    _cursor += sizeof(T);
  }

 private:
  uint8_t* _cursor;
};

/// Walks a record's field list and writes or counts: one verb for each wire kind, the same verbs as FieldReader. The
/// names are for the reader; they are ignored here.
template <class Out>
class FieldEncoder : public Out {
 public:
  template <class... Args>
  explicit FieldEncoder(uint8_t classVersion, Args&&... args)
      : Out(std::forward<Args>(args)...), _version(classVersion) {}

  static constexpr bool READING = false;
  uint8_t version() const { return _version; }  ///< class version being written
  bool ok() const { return true; }

  void boolean(const char*, bool v) { this->put(v); }
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
  void f32(const char*, float v) { this->put(v); }
  /// An enumeration written as `i8` that is read back as `u8` and widened.
  template <class T>
  void i8ReadAsU8(const char* name, const T& v) {
    i8(name, v);
  }

  void text(const char*, const std::string& v) { Out::text(v); }
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

  template <class Record>
  VELTRA_ALWAYS_INLINE void record(const char*, Record& nested) {
    if constexpr (IsWalkedInline<Record>::value) {
      this->put(Record::CLASS_VERSION);
      FieldAccess::walk(nested, *this);
    } else {
      Out::record(nested);
    }
  }

 private:
  uint8_t _version;
};

using FieldWriter = FieldEncoder<StreamOut>;
using FieldCounter = FieldEncoder<CountOut>;

}  // namespace Marshal
