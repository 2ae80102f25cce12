// Settings rebuilt from bytes whose type nobody knows.
#include <libcrossplatform/common/Settings.h>
#include <libcrossplatform/serialization/Header.h>

#include "RecordProperties.h"

using Veltra::Settings;

namespace {

void checkSettings(Settings& settings, uint32_t id) {
  const Fuzz::Bytes written = Fuzz::bytesOf(settings);
  Fuzz::Bytes copy = written;
  Marshal::StreamOpStatus status = Marshal::STREAM_SHORT;
  const std::unique_ptr<Settings> again = Settings::create(copy.data(), static_cast<unsigned>(copy.size()), status);
  FUZZ_CHECK(copy == written);
  FUZZ_CHECK(again != nullptr && status == Marshal::STREAM_OK);
  FUZZ_CHECK(again->getSettingsType() == settings.getSettingsType());
  const auto* const project = dynamic_cast<const Veltra::OrbelSettings*>(&settings);
  if (project == nullptr || Fuzz::readsBack(*project)) FUZZ_CHECK(Fuzz::bytesOf(*again) == written);

  const std::unique_ptr<Settings> fresh = Settings::create(id);
  FUZZ_CHECK(fresh != nullptr && fresh->getSettingsType() == settings.getSettingsType());
  // What one object shows another takes, as often as wished.
  const Json::Value json = settings.toJson(Dump::DumpFlags());
  FUZZ_CHECK(fresh->fromJson(&json));
  FUZZ_CHECK(!fresh->fromJson(nullptr));
  Fuzz::show(settings);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  return Fuzz::runInput(data, size, [](const Fuzz::Input& input) {
    Fuzz::Bytes bytes = input.bytes();
    Marshal::StreamOpStatus status = Marshal::STREAM_OK;
    const std::unique_ptr<Settings> settings =
        Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status);
    FUZZ_CHECK(bytes == input.bytes());
    FUZZ_CHECK(settings == nullptr || status == Marshal::STREAM_OK);
    if (settings == nullptr && status != Marshal::STREAM_OK) return;
    Marshal::ByteStreamReader in(input.data, input.size32());
    uint32_t id = 0;
    FUZZ_CHECK(Marshal::peekHeaderSerialTypeID(in, id) == Marshal::STREAM_OK);
    FUZZ_CHECK((settings != nullptr) == (Settings::create(id) != nullptr));
    if (settings != nullptr) checkSettings(*settings, id);
  });
}
