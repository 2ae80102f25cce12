// settings_from_bytes FILE
//
// Rebuilds a settings object from the bytes in FILE, whichever class they are of, and prints it. Without FILE it makes
// up its own. Exit status 1 when the bytes are no settings, 2 when FILE cannot be read.
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/Settings.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/SimpleFormatter.h>

namespace {

std::vector<unsigned char> sampleBytes() {
  Veltra::InstrumentSettings settings;
  settings.language = Veltra::LANGUAGE_GERMAN;
  settings.lengthUnits = Veltra::LENGTH_UNITS_FT;
  settings.timeZone = "Europe/Berlin";
  Marshal::ByteStreamBuilder out;
  settings.serialize(out);
  return {out.data(), out.data() + out.size()};
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<unsigned char> bytes;
  if (argc > 1) {
    std::ifstream in(argv[1], std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(in), {});
    if (!in.is_open() || in.bad()) {
      std::cerr << "settings_from_bytes: cannot read " << argv[1] << "\n";
      return 2;
    }
  } else {
    bytes = sampleBytes();
  }

  Marshal::StreamOpStatus status = 0;
  const auto settings = Veltra::Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status);
  if (settings == nullptr) {
    // A status of 0 says that the bytes are an intact record, but of no settings class.
    std::cerr << "settings_from_bytes: no settings, status " << status << "\n";
    return 1;
  }
  std::cout << "settings type " << settings->getSettingsType() << "\n";
  Dump::SimpleFormatter formatter(std::cout);
  settings->dump(formatter, Dump::DumpFlags());
  return 0;
}
