#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <memory>
#include <string>
#include <vector>

#include <libcrossplatform/serialization/FlatRecord.h>

namespace Marshal {

/// Walks a record's field list and reads: straight from the stream's window when it offers one, through its operations
/// otherwise. Keeps the first failed text or record; every later verb then does nothing. A failed fixed-width read is
/// not kept: it leaves its target as it was and shows in the stream's status.
class FieldReader : public FixedFields<FieldReader> {
 public:
  /// @param stream  borrowed; positioned after the last field read when the walker is destroyed
  FieldReader(IObjectReader& stream, uint8_t classVersion)
      : _stream(stream), _window(stream.window()), _version(classVersion) {}
  ~FieldReader() { commit(); }
  FieldReader(const FieldReader&) = delete;
  FieldReader& operator=(const FieldReader&) = delete;

  uint8_t version() const { return _version; }  ///< class version being read
  /// For a version that is known only after the header is read.
  void setVersion(uint8_t classVersion) { _version = classVersion; }
  StreamOpStatus status() const { return _status; }  ///< of the first text or record that failed, otherwise 0
  bool ok() const { return _status == STREAM_OK; }   ///< no text and no record has failed
  /// -3 when the stream has failed, whichever field failed.
  StreamOpStatus streamStatus() const {
    // A stream offers a window only while its status is 0.
    return _window.cursor == nullptr && _stream.status() != STREAM_OK ? STREAM_SHORT : STREAM_OK;
  }
  /// Ends the walk with the record's own code; the first one stays.
  void fail(StreamOpStatus status) {
    if (!ok()) return;
    _window = closed(_stream, _window);
    _status = status;
  }

  /// A `string`; a failed read ends the walk with -3.
  void text(const char* name, std::string& v) {
    const ReadWindow start = _window;
    if (start.cursor != nullptr) {
      uint32_t size = 0;
      if (!length(name, size)) return;
      if (size <= remaining()) {
        v.assign(reinterpret_cast<const char*>(_window.cursor), size);
        _window.cursor += size;
        return;
      }
    }
    if (!ok()) return;
    // The stream's own operation, from the length on: where bytes are missing it fails and consumes none.
    bool done = false;
    _window = textSlowly(_stream, start, name, v, done);
    if (!done) fail(STREAM_SHORT);
  }
  /// Text up to the first zero byte of its run. A length of 0 ends the walk with -1, a short run with -3.
  void terminatedText(const char* name, std::string& v);
  /// All bytes of its run. A short run ends the walk with -3.
  void countedText(const char* name, std::string& v);
  /// The length word of any text. One that cannot be read ends the walk with -3.
  VELTRA_ALWAYS_INLINE bool length(const char* name, uint32_t& size) {
    if (get(name, size)) return true;
    fail(STREAM_SHORT);
    return false;
  }
  /// `size` bytes, read in pieces: a length from outside never allocates more than 64 KiB ahead of what is there.
  bool run(const char* name, uint32_t size, std::string& out);

  /// A nested record. Its code ends the walk, or `failure` in its place.
  template <class Record>
  VELTRA_ALWAYS_INLINE void record(const char* name, Record& nested, StreamOpStatus failure = STREAM_OK) {
    if (!ok()) return;
    const bool traced = _window.cursor == nullptr;
    if (traced) _stream.beginRecord(name);
    if constexpr (IsWalkedInline<Record>::value) {
      walkInline(nested);
    } else {
      commit();
      const StreamOpStatus s = nested.deserialize(_stream);
      _window = _stream.window();
      if (s != STREAM_OK) fail(s);
    }
    if (!ok() && failure != STREAM_OK) _status = failure;
    if (traced) _stream.endRecord();
  }

  /// The elements of a list: read over those that are there, as far as their type is `Record` itself, and cut after the
  /// last one read, whatever ends their walk. A list read again makes no element that it had before.
  template <class Record>
  void elements(const char* name, std::vector<std::unique_ptr<Record>>& list, std::size_t count,
                StreamOpStatus failure = STREAM_OK) {
    struct Cut {
      std::vector<std::unique_ptr<Record>>& list;
      std::size_t size = 0;
      ~Cut() { list.resize(size); }
    } cut{list};
    // In a caller's own stream each element asks for its position and window, which can be seen.
    const bool isOwn = exactly<ByteStreamReader>(_stream) != nullptr;
    for (; cut.size < count; ++cut.size) {
      if (cut.size == list.size()) {
        list.push_back(std::make_unique<Record>());
      } else if (exactly<Record>(*list[cut.size]) == nullptr) {
        list[cut.size] = std::make_unique<Record>();
      }
      Record& element = *list[cut.size];
      if constexpr (IsFlat<Record>::value) {
        if (isOwn && loadFlat(element, _window)) continue;
      }
      record(name, element, failure);
      if (!ok()) return;
    }
  }

  /// Fields under their own name, without a version.
  template <class Group>
  VELTRA_ALWAYS_INLINE void group(const char* name, Group& nested) {
    const bool traced = _window.cursor == nullptr;
    if (traced) _stream.beginRecord(name);
    FieldAccess::walk(nested, *this);
    if (traced) _stream.endRecord();
  }

  /// A versioned inline record: its version byte, its defaults, its fields.
  template <class Record>
  VELTRA_ALWAYS_INLINE void walkInline(Record& nested) {
    uint8_t version = 0;
    if (!get("version", version)) return fail(STREAM_SHORT);
    if (version > Record::CLASS_VERSION) return fail(Record::TOO_NEW_STATUS);
    if constexpr (!IsReadOverElements<Record>::value) nested.clear();
    FieldAccess::walk(nested, *this);
    if (streamStatus() != STREAM_OK) fail(STREAM_SHORT);
  }

  /// One number of the width of `T`. @return false, with `v` unchanged, when the stream ran out
  template <class T>
  VELTRA_ALWAYS_INLINE bool get(const char* name, T& v) {
    if (remaining() < sizeof(T)) {
      if (!ok()) return false;
      T value = v;
      bool done = false;
      _window = getSlowly(_stream, _window, name, value, done);
      if (done) v = value;
      return done;
    }
    v = loadBig<T>(_window.cursor);
    _window.cursor += sizeof(T);
    return true;
  }

 private:
  std::size_t remaining() const { return static_cast<std::size_t>(_window.end - _window.cursor); }
  void commit() {
    if (_window.cursor != nullptr) _stream.advanceTo(_window.cursor);
  }

  // The window goes in and out by value, and nothing here takes the walker's own address, so that the cursor can stay
  // in a register between two fields.
  template <class T>
  __attribute__((noinline, cold)) static ReadWindow getSlowly(IObjectReader& stream, ReadWindow window,
                                                              const char* name, T& value, bool& done) {
    if (window.cursor != nullptr) stream.advanceTo(window.cursor);
    stream.beginField(name);
    done = readFrom(stream, value);
    return stream.window();
  }
  __attribute__((noinline, cold)) static ReadWindow closed(IObjectReader& stream, ReadWindow window) {
    if (window.cursor != nullptr) stream.advanceTo(window.cursor);
    return {};
  }
  __attribute__((noinline, cold)) static ReadWindow textSlowly(IObjectReader& stream, ReadWindow window,
                                                               const char* name, std::string& v, bool& done);

  static bool readFrom(IObjectReader& stream, bool& v) { return stream.readBool(v); }
  static bool readFrom(IObjectReader& stream, uint8_t& v) { return stream.readUInt8(v); }
  static bool readFrom(IObjectReader& stream, int8_t& v) { return stream.readInt8(v); }
  static bool readFrom(IObjectReader& stream, uint16_t& v) { return stream.readUInt16(v); }
  static bool readFrom(IObjectReader& stream, int16_t& v) { return stream.readInt16(v); }
  static bool readFrom(IObjectReader& stream, uint32_t& v) { return stream.readUInt32(v); }
  static bool readFrom(IObjectReader& stream, int32_t& v) { return stream.readInt32(v); }
  static bool readFrom(IObjectReader& stream, int64_t& v) { return stream.readInt64(v); }
  static bool readFrom(IObjectReader& stream, float& v) { return stream.readFloat(v); }

  IObjectReader& _stream;
  ReadWindow _window;
  uint8_t _version;
  StreamOpStatus _status = STREAM_OK;
};

}  // namespace Marshal
