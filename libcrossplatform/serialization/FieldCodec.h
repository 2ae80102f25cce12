#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/serialization/FieldReader.h>
#include <libcrossplatform/serialization/FlatRecord.h>

/// The three shapes of a record on the wire. A record has a field list for FieldAccess and calls one pair of these:
///
///   headed            SERIAL_TYPE_ID (combined id), CLASS_VERSION, clear()
///   versioned inline  CLASS_VERSION, TOO_NEW_STATUS, clear(); where it is nested, its list is walked in place
///   plain inline      only the fields
namespace Marshal {

/// Class version that headers and plain records are walked with: they have none of their own.
constexpr uint8_t NO_CLASS_VERSION = 0;

/// Bytes of a record's field list, without any header.
template <class Record>
uint32_t countFields(Record& record) {
  FieldCounter counter(Record::CLASS_VERSION);
  FieldAccess::walk(record, counter);
  return counter.total();
}

/// A headed record in any stream, field by field.
template <class Record>
__attribute__((noinline)) unsigned writeHeadedFields(Record& record, IObjectWriter& out) {
  Header header(Record::SERIAL_TYPE_ID, Record::CLASS_VERSION);
  const uint32_t start = out.position();
  // A stream that cannot rewrite needs the right length at once.
  if (start == IObjectWriter::NO_POSITION) header.setLength(countFields(record));
  {
    FieldWriter f(Record::CLASS_VERSION, out);
    if (!f.hasWindow() && out.countsOnly()) {
      const uint32_t size = Header::BYTES + countFields(record);
      out.skip(size);
      return size;
    }
    header.write(f, start);
    FieldAccess::walk(record, f);
  }
  return header.serializeLength(out);
}

/// The reverse of writeHeadedFields(). @return 0; codes of Header, of the fields and of the length unchanged
template <class Record>
[[nodiscard]] __attribute__((noinline)) StreamOpStatus readHeadedFields(Record& record, IObjectReader& in) {
  Header header;
  const uint32_t start = in.position();
  StreamOpStatus status = STREAM_OK;
  {
    FieldReader f(in, NO_CLASS_VERSION);
    if (const StreamOpStatus s = header.read(f, start); s != STREAM_OK) return s;
    if (const StreamOpStatus s = header.check(Record::CLASS_VERSION, Record::SERIAL_TYPE_ID); s != STREAM_OK) return s;
    if constexpr (!IsReadOverElements<Record>::value) record.clear();
    f.setVersion(header.classVersion());
    FieldAccess::walk(record, f);
    status = f.status();
  }
  return header.checkLength(in, status);
}

///@{
/// A headed record. A flat one goes past the operations of the library's own streams. The other way is a call, which
/// keeps the frame of this one small.
template <class Record>
unsigned writeHeaded(Record& record, IObjectWriter& out) {
  if constexpr (IsFlat<Record>::value) {
    if (auto* const own = exactly<ByteStreamBuilder>(out)) {
      const std::size_t size = flatBytes(record);
      const bool isShort = size <= std::numeric_limits<uint32_t>::max();
      const WriteWindow window = isShort ? own->window(static_cast<uint32_t>(size)) : WriteWindow();
      if (window.cursor != nullptr) {
        storeFlat(record, window.cursor, size);
        own->advanceTo(window.cursor + size);
        return static_cast<unsigned>(size);
      }
    }
  }
  return writeHeadedFields(record, out);
}

template <class Record>
[[nodiscard]] StreamOpStatus readHeaded(Record& record, IObjectReader& in) {
  if constexpr (IsFlat<Record>::value) {
    if (auto* const own = exactly<ByteStreamReader>(in)) {
      ReadWindow window = own->window();
      if (loadFlat(record, window)) {
        own->advanceTo(window.cursor);
        return STREAM_OK;
      }
    }
  }
  return readHeadedFields(record, in);
}
///@}

///@{
/// A versioned inline record. @return bytes written, 0 on a stream without positions; 0 or the code of the fields
template <class Record>
unsigned writeInline(Record& record, IObjectWriter& out) {
  const uint32_t start = out.position();
  {
    FieldWriter f(Record::CLASS_VERSION, out);
    f.put(Record::CLASS_VERSION);
    FieldAccess::walk(record, f);
  }
  return out.position() - start;
}

template <class Record>
[[nodiscard]] StreamOpStatus readInline(Record& record, IObjectReader& in) {
  FieldReader f(in, Record::CLASS_VERSION);
  f.walkInline(record);
  return f.status();
}
///@}

///@{
/// A plain inline record. @return as writeInline() and readInline()
template <class Record>
unsigned writePlain(Record& record, IObjectWriter& out) {
  const uint32_t start = out.position();
  {
    FieldWriter f(NO_CLASS_VERSION, out);
    FieldAccess::walk(record, f);
  }
  return out.position() - start;
}

template <class Record>
[[nodiscard]] StreamOpStatus readPlain(Record& record, IObjectReader& in) {
  FieldReader f(in, NO_CLASS_VERSION);
  FieldAccess::walk(record, f);
  return f.ok() ? f.streamStatus() : f.status();
}
///@}

}  // namespace Marshal
