#pragma once

#include <type_traits>
#include <typeinfo>

#include <libcrossplatform/serialization/WireBytes.h>

/// What the walkers of field lists ask of a record, when it is compiled and when it is there.
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

/// True for a headed record that says of itself that it is flat, `static constexpr bool IS_FLAT = true`: its list names
/// every member, and all of them are numbers, texts and versioned inline records that are flat in the same sense. Such
/// a record is stored and loaded with one comparison of its size, and needs no clear() before it is read
/// (FlatRecord.h).
template <class Record, class = void>
struct IsFlat : std::false_type {};
template <class Record>
struct IsFlat<Record, std::enable_if_t<Record::IS_FLAT>> : std::true_type {};

/// The object as a `T` if that is its own type and no subclass of it, null otherwise. A type that two libraries hold
/// twice counts as another: telling it by its name would cost more than what this is asked for saves.
template <class T, class Base>
VELTRA_ALWAYS_INLINE T* exactly(Base& object) {
  return &typeid(object) == &typeid(T) ? static_cast<T*>(&object) : nullptr;
}

/// True for a list record, whose elements FieldReader::elements() replaces: it is not cleared before, so that they are
/// there to be read over.
template <class Record, class = void>
struct HasElements : std::false_type {};
template <class Record>
struct HasElements<Record, std::void_t<typename Record::Element>> : std::true_type {};

}  // namespace Marshal
