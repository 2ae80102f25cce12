#pragma once

#include <sstream>

#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/WifiProfile.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamCounter.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/IDumpable.h>
#include <libcrossplatform/serialization/IJsonable.h>
#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/SimpleFormatter.h>
#include <libcrossplatform/serialization/Utf8Text.h>
#include <tests/PlainStreams.h>

#include "FuzzInput.h"

/// The properties that every record has on every input.
namespace Fuzz {

inline Bytes bytesOf(Marshal::ISerializable& record) {
  Marshal::ByteStreamBuilder out;
  record.serialize(out);
  FUZZ_CHECK(!out.failed());
  return Bytes(out.data(), out.data() + out.size());
}

/// Whether a record reads back as it is written. Overloads name what does not.
inline bool readsBack(const Marshal::ISerializable&) {
  return true;
}

/// The network of a project may be any JSON, but JsonCpp's writer does not keep every name that needs an escape.
inline bool readsBack(const Veltra::OrbelSettings& settings) {
  return Dump::compactJson(settings.netProfile).find("\\u") == std::string::npos;
}

/// Whether what a network stores in plain text is UTF-8: no other can be stored.
inline bool isStorable(const WifiProfile& network) {
  bool storable = Dump::isUtf8(network.ssid);
  for (const std::string& address : network.dns) storable = storable && Dump::isUtf8(address);
  if (network.useDhcp) return storable;
  for (const std::string* address : {&network.inetAddr, &network.mask, &network.broadcast, &network.gateway}) {
    storable = storable && Dump::isUtf8(*address);
  }
  return storable;
}

/// What was read can be written to every kind of stream, alike, and what is written reads back as the same bytes.
template <class Record>
void checkRoundTrip(Record& record) {
  const Bytes bytes = bytesOf(record);
  Marshal::ByteStreamCounter counter;
  record.serialize(counter);
  FUZZ_CHECK(counter.size() == bytes.size());
  RecordTesting::PlainWriter plain;
  record.serialize(plain);
  FUZZ_CHECK(plain.bytes == bytes);

  if (!readsBack(record)) return;
  Record again;
  Marshal::ByteStreamReader in(bytes.data(), static_cast<uint32_t>(bytes.size()));
  FUZZ_CHECK(again.deserialize(in) == Marshal::STREAM_OK);
  FUZZ_CHECK(in.position() == bytes.size());
  FUZZ_CHECK(bytesOf(again) == bytes);
}

/// A caller's stream without a window reads the same. One without a position, too, does not compare lengths: it takes
/// whatever the others take.
template <class Record>
void checkPlainStream(const Input& input, Record& expected, Marshal::StreamOpStatus status) {
  for (const bool positioned : {true, false}) {
    Record record;
    RecordTesting::PlainReader in(input.data, input.size32(), positioned);
    const Marshal::StreamOpStatus plain = record.deserialize(in);
    FUZZ_CHECK(plain == status || (!positioned && status != Marshal::STREAM_OK));
    if (status == Marshal::STREAM_OK) FUZZ_CHECK(bytesOf(record) == bytesOf(expected));
  }
}

/// Every text a record can show itself as, at every level. A listed assertion ends one of them, not the others.
template <class Record>
void show(const Record& record) {
  for (int level = 0; level <= Dump::DumpFlags::FULL_LEVEL + 1; ++level) {
    Dump::DumpFlags flags;
    flags.level = level;
    guarded([&] {
      std::ostringstream out;
      Dump::SimpleFormatter formatter(out);
      record.dump(formatter, flags);
    });
    if constexpr (std::is_base_of_v<Dump::IJsonable, Record>) {
      guarded([&] { Dump::toJsonString(record, flags, level % 2 == 0); });
    }
  }
}

/// Reads a record from an input and checks all of the above.
/// @return the code of deserialize()
template <class Record>
Marshal::StreamOpStatus checkRecord(const Input& input) {
  if (input.size == 0) return Marshal::STREAM_SHORT;
  Record record;
  Marshal::ByteStreamReader in(input.data, input.size32());
  const Marshal::StreamOpStatus status = record.deserialize(in);
  FUZZ_CHECK(status <= Marshal::STREAM_OK && status >= Marshal::STREAM_INLINE_TOO_NEW);
  FUZZ_CHECK(in.position() <= input.size);
  checkPlainStream(input, record, status);
  if (status == Marshal::STREAM_OK) checkRoundTrip(record);
  // A record that was filled in part can be shown all the same.
  if constexpr (std::is_base_of_v<Dump::IDumpable, Record>) show(record);
  return status;
}

}  // namespace Fuzz
