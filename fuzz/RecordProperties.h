#pragma once

#include <sstream>

#include <libcrossplatform/common/Celsius.h>
#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/EquipmentInformation.h>
#include <libcrossplatform/common/FolderMetadata.h>
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/PFileHeader.h>
#include <libcrossplatform/common/ResultSummary.h>
#include <libcrossplatform/common/ToleranceMeas.h>
#include <libcrossplatform/common/WifiProfile.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamCounter.h>
#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/SimpleFormatter.h>
#include <libcrossplatform/serialization/Utf8Text.h>
#include <tests/PlainStreams.h>

#include "FuzzInput.h"

/// The records, and the properties that every record has on every input.
namespace Fuzz {

template <class... Records>
struct Types {};
template <class Record>
struct Type {
  using type = Record;
};

/// Compared with Veltra::recordTypes() by the target Record.
using HeadedRecords =
    Types<Veltra::ResultSummary, Veltra::ResultSummaryList, Veltra::EquipmentInformation, Veltra::InstrumentSettings,
          Veltra::OrbelSettings, Veltra::FolderMetadataList, Veltra::DatabaseVersion, Veltra::DatabaseDescriptorList,
          Veltra::DatabasePackageManifestSummary, Veltra::DatabasePackageManifest, FibDbus::OtdrSpan>;
/// Those that stand inside others, or alone, without a header.
using PlainRecords = Types<Veltra::ScaledInt, Veltra::DisplayMeas, Veltra::ToleranceMeas, Veltra::Celsius,
                           Veltra::CustomerDatabaseVersion, Veltra::DatabaseDescriptor, Veltra::FolderMetadata,
                           Veltra::ResultPathSummary, Veltra::ResultPathSummaryList, PFile::Header>;
/// Those with a fromJson().
using JsonRecords =
    Types<Veltra::Celsius, Veltra::EquipmentInformation, Veltra::CustomerDatabaseVersion,
          Veltra::DatabasePackageManifestSummary, Veltra::InstrumentSettings, Veltra::OrbelSettings, FibDbus::OtdrSpan>;

/// Calls `visit` with the Type of each record. A listed fatal assertion ends one of the calls, not the others.
template <class... Records, class Visit>
void forEach(Types<Records...>, const Visit& visit) {
  (guarded([&] { visit(Type<Records>()); }), ...);
}

inline Bytes bytesOf(Marshal::ISerializable& record) {
  Marshal::ByteStreamBuilder out;
  record.serialize(out);
  FUZZ_CHECK(!out.failed());
  return Bytes(out.data(), out.data() + out.size());
}

/// Whether a record reads back as it is written: the network of a project may be any JSON, but JsonCpp's writer does
/// not keep every name that needs an escape.
inline bool readsBack(const Marshal::ISerializable& record) {
  const auto* const settings = dynamic_cast<const Veltra::OrbelSettings*>(&record);
  return settings == nullptr || Dump::compactJson(settings->netProfile).find("\\u") == std::string::npos;
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

/// Every text a record can show itself as, at every level.
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
Marshal::StreamOpStatus checkRecord(const Input& input, Record& record) {
  Marshal::ByteStreamReader in(input.data, input.size32());
  const Marshal::StreamOpStatus status = record.deserialize(in);
  FUZZ_CHECK(status <= Marshal::STREAM_OK && status >= Marshal::STREAM_INLINE_TOO_NEW);
  FUZZ_CHECK(in.position() <= input.size);
  // A caller's stream without a window reads the same. One without a position, too, does not compare lengths: it takes
  // whatever the others take.
  for (const bool positioned : {true, false}) {
    Record again;
    RecordTesting::PlainReader plain(input.data, input.size32(), positioned);
    const Marshal::StreamOpStatus code = again.deserialize(plain);
    FUZZ_CHECK(code == status || (!positioned && status != Marshal::STREAM_OK));
    if (status == Marshal::STREAM_OK) FUZZ_CHECK(bytesOf(again) == bytesOf(record));
  }
  if (status == Marshal::STREAM_OK) checkRoundTrip(record);
  // A record that was filled in part can be shown all the same.
  if constexpr (std::is_base_of_v<Dump::IDumpable, Record>) show(record);
  return status;
}

}  // namespace Fuzz
