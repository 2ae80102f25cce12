#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <type_traits>
#include <typeinfo>

#include <libcrossplatform/serialization/WireBytes.h>

/// What the walkers of field lists ask of a record, when it is compiled and when it is there.
namespace Marshal {

/// Walks a record's field list, `template <class Fields> void fields(Fields&)`: its members in wire order, each named
/// once. The list is private to the record, which has this class as a friend.
class FieldAccess {
 public:
  /// Calls the record's fields() with the walker.
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
/// Nothing is exactly of a type where a program does without RTTI: the same is done there, the slow way.
template <class T, class Base>
VELTRA_ALWAYS_INLINE T* exactly(Base& object) {
#ifdef __cpp_rtti
  return &typeid(object) == &typeid(T) ? static_cast<T*>(&object) : nullptr;
#else
  static_cast<void>(object);
  return nullptr;
#endif
}

/// True for a list record that says so, `static constexpr bool IS_READ_OVER_ELEMENTS = true`: it has nothing but
/// elements, which FieldReader::elements() replaces. It is not cleared before, so that they are there to be read over.
template <class Record, class = void>
struct IsReadOverElements : std::false_type {};
template <class Record>
struct IsReadOverElements<Record, std::enable_if_t<Record::IS_READ_OVER_ELEMENTS>> : std::true_type {};

}  // namespace Marshal
