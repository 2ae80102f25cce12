#include <libcrossplatform/common/Settings.h>

// Settings::create() has its own unit: it knows the settings classes, and they all know Settings.h.
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/Header.h>

namespace Veltra {

std::unique_ptr<Settings> Settings::create(unsigned int serialType) {
  switch (serialType) {
    case InstrumentSettings::SERIAL_TYPE_ID:
      return std::make_unique<InstrumentSettings>();
    case OrbelSettings::SERIAL_TYPE_ID:
      return std::make_unique<OrbelSettings>();
    default:
      return nullptr;
  }
}

std::unique_ptr<Settings> Settings::create(unsigned char* buffer, unsigned int length,
                                           Marshal::StreamOpStatus& status) {
  status = Marshal::STREAM_WRONG_ELEMENT;
  if (buffer == nullptr || length == 0) return nullptr;

  Marshal::ByteStreamReader in(buffer, length);
  uint32_t id = 0;
  status = Marshal::peekHeaderSerialTypeID(in, id);
  if (status != Marshal::STREAM_OK) return nullptr;

  std::unique_ptr<Settings> settings = create(id);
  if (settings == nullptr) return nullptr;  // no error: the status stays 0
  status = settings->deserialize(in);
  if (status == Marshal::STREAM_OK && in.status() != Marshal::STREAM_OK) status = Marshal::STREAM_SHORT;
  if (status != Marshal::STREAM_OK) return nullptr;
  return settings;
}

}  // namespace Veltra
