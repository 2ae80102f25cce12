// make_payloads DIR: computes the payloads of the example results (results/*.json) into the directory DIR, which must
// exist, and prints the headline values of each link. The same bytes on every machine; integers are big-endian.
#include <cstdio>
#include <fstream>
#include <string>

#include <libcrossplatform/common/PFileHeader.h>
#include <libcrossplatform/common/ScaledInt.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/JsonText.h>

#include "payload_models.h"

namespace {

struct Output {
  std::string directory;
  std::string all;
  bool good = true;

  void write(const std::string& name, const std::string& bytes) {
    std::ofstream file(directory + "/" + name, std::ios::binary);
    good = (file << bytes).flush() && good;
    all += bytes;
  }
  void write(const std::string& name, const Marshal::ByteStreamBuilder& bytes) {
    write(name, std::string(bytes.data(), bytes.data() + bytes.size()));
  }
};

template <class Int = int16_t>
Int rounded(double value, double scale) {
  return static_cast<Int>(std::floor(value * scale + 0.5));
}

std::string text(double value) {
  return Veltra::ScaledInt::fromRaw(rounded<int32_t>(value, 100), Veltra::ScaledInt::SCALED_TO_HUNDREDTHS).toString();
}

void printHeadline(const std::string& name, double length, double headroom) {
  std::printf("%-20s %9s m   headroom %6s dB\n", name.c_str(), text(length).c_str(), text(headroom).c_str());
}

struct CopperLink {
  const char* name;
  double length;  ///< m
  double margin;  ///< dB between return loss or crosstalk and their limits, where they are closest
};

/// The curves of a link, its worst margins and what else is known of it. Insertion loss follows from the length; the
/// other two keep off their limits by the margin and a ripple.
class CopperSweeps {
 public:
  explicit CopperSweeps(const CopperLink& link) : _link(link), _random(rounded<uint32_t>(link.length, 10)) {}

  void writeTo(Output& out) {
    constexpr const char* PAIRS[] = {"1,2", "3,6", "4,5", "7,8"};
    constexpr double TWIST[] = {0.97, 1.0, 0.95, 0.98};  // m of wire in a metre: the pairs differ in their twist
    for (int a = 0; a < 4; ++a) {
      const double length = _link.length * TWIST[a];
      sweep("insertion loss", PAIRS[a], models::insertionLossLimit, length);
      sweep("return loss", PAIRS[a], models::returnLossLimit, 0);
      for (int b = a + 1; b < 4; ++b) sweep("NEXT", std::string(PAIRS[a]) + "-" + PAIRS[b], models::nextLimit, 0);
      Json::Value& pair = _info["pairs"][PAIRS[a]];
      pair["lengthM"] = text(length);
      pair["delayNs"] = text(length / 100 * models::cableDelay(10));
      pair["loopResistanceOhm"] = text(length / 100 * 2 * models::CONDUCTOR_RESISTANCE);
    }
    _info["cable"] = "Cat 6A U/FTP";
    const std::string name = _link.name;
    out.write(name + "-sweeps.bin", _curves);
    out.write(name + "-info.json", Dump::styledJson(_info));
    out.write(name + "-margins.json", Dump::styledJson(_margins));
    printHeadline(name, _link.length, _headroom);
  }

 private:
  /// @param length  m, for insertion loss; 0 for the other quantities
  void sweep(const char* quantity, const std::string& pairs, double (*limit)(double), double length) {
    double worst = 1000, worstAt = 0, ripple = 0.5;
    for (unsigned kHz = 1000; kHz <= 500000; kHz += models::stepAt(kHz)) {
      const double f = kHz / 1000.0;
      ripple += (models::uniform(_random) - ripple) / 8;  // changes slowly with the frequency
      const double keptOff = _link.margin + 100 * (ripple - 0.5) * (ripple - 0.5);
      // Good cable: 8 % better than the standard asks. No tester sees through more than 90 dB.
      const double loss = std::min(90.0, length / 100 * 0.92 * models::cableLoss(f) + 3 * models::connectorLoss(f));
      const double margin = length > 0 ? limit(f) - loss : keptOff;
      _curves.writeInt16(rounded(length > 0 ? loss : limit(f) + keptOff, 100));
      if (margin < worst) {
        worst = margin;
        worstAt = f;
      }
    }
    Json::Value& row = _margins.append(Json::objectValue);
    row["quantity"] = quantity;
    row["pairs"] = pairs;
    row["worstMarginDb"] = text(worst);
    row["atMHz"] = text(worstAt);
    _headroom = std::min(_headroom, worst);
  }

  CopperLink _link;
  std::mt19937 _random;
  Marshal::ByteStreamBuilder _curves;
  Json::Value _info = Json::objectValue;
  Json::Value _margins = Json::arrayValue;
  double _headroom = 1000;
};

/// The trace in 0.001 dB, its plot, which has the lowest and the highest of every four samples, and the events.
void writeTrace(const std::string& name, const models::Medium& medium, const models::Events& events,
                const models::Range& range, Output& out) {
  std::vector<uint16_t> samples;
  for (const double level : models::otdrTrace(medium, events, range)) {
    samples.push_back(rounded<uint16_t>(std::min(level, 65.535), 1000));  // the detector saturates
  }
  Marshal::ByteStreamBuilder trace, plot, table;
  trace.writeUInt32(rounded<uint32_t>(range.spacing, 1000));
  for (const uint16_t sample : samples) trace.writeUInt16(sample);
  for (auto column = samples.begin(); column != samples.end(); column += 4) {
    const auto [low, high] = std::minmax_element(column, column + 4);
    plot.writeUInt16(*low);
    plot.writeUInt16(*high);
  }
  for (const models::Event& event : events) {
    table.writeUInt32(rounded<uint32_t>(event.at, 100));
    table.writeInt16(rounded(event.loss, 1000));
    table.writeInt16(rounded(event.reflectance, 100));
  }
  out.write(name + "-trace.bin", trace);
  out.write(name + "-plot.bin", plot);
  out.write(name + "-events.bin", table);
  printHeadline(name, events.back().at, models::lossLimit(medium, events) - models::linkLoss(medium, events));
}

/// Loss at two wavelengths, as light source and power meter measure it.
void writeLossLength(const std::string& name, const models::Medium& a, const models::Medium& b,
                     const models::Events& events, Output& out) {
  Marshal::ByteStreamBuilder table;
  for (const models::Medium& medium : {a, b}) {
    const double loss = models::linkLoss(medium, events), limit = models::lossLimit(medium, events);
    table.writeUInt16(static_cast<uint16_t>(medium.wavelength));
    table.writeInt16(rounded(loss, 1000));
    table.writeInt16(rounded(limit, 1000));
    printHeadline(name, events.back().at, limit - loss);
  }
  out.write(name + "-losses.bin", table);
}

/// A single-mode end face as a probe sees it, as PGM with pixels of 0.5 um, and its specks with the zones of
/// IEC 61300-3-35: 0 the core's, to 25 um; 1 the cladding's, to 120 um; 2 the adhesive's, to 130 um; 3 the contact's.
void writeEndFace(const std::string& name, unsigned specks, Output& out) {
  constexpr int WIDTH = 400, HEIGHT = 300;
  std::mt19937 random(specks);
  const auto squared = [](int dx, int dy) { return dx * dx + dy * dy; };
  std::string image = "P5\n400 300\n255\n";
  const std::size_t pixels = image.size();
  for (int i = 0; i < WIDTH * HEIGHT; ++i) {
    const int d = squared(i % WIDTH - WIDTH / 2, i / WIDTH - HEIGHT / 2);
    const int grey = d < 9 * 9 ? 215 : d < 125 * 125 ? 150 : 65;  // core of 9 um, cladding of 125 um, ferrule
    image += static_cast<char>(grey + static_cast<int>(random() % 9));
  }
  Marshal::ByteStreamBuilder table;
  for (unsigned s = 0; s < specks; ++s) {
    const int x0 = 10 + static_cast<int>(random() % (WIDTH - 20)), y0 = 10 + static_cast<int>(random() % (HEIGHT - 20));
    const int r = 1 + static_cast<int>(random() % 6), d = squared(x0 - WIDTH / 2, y0 - HEIGHT / 2);
    for (int y = y0 - r; y <= y0 + r; ++y) {
      for (int x = x0 - r; x <= x0 + r; ++x) {
        if (squared(x - x0, y - y0) <= r * r) image[pixels + static_cast<std::size_t>(y * WIDTH + x)] = 20;
      }
    }
    const int zone = d < 25 * 25 ? 0 : d < 120 * 120 ? 1 : d < 130 * 130 ? 2 : 3;
    for (const int field : {x0, y0, r, zone}) table.writeInt16(static_cast<int16_t>(field));
  }
  out.write(name + "-image.pgm", image);
  out.write(name + "-specks.bin", table);
}

constexpr CopperLink COPPER_LINKS[] = {{"copper-pass", 45.2, 4.3},
                                       {"copper-pass-star", 83.6, 0.3},
                                       {"copper-fail-star", 71.9, -0.3},
                                       {"copper-fail", 97.3, -3.1},
                                       {"copper-drum", 305.0, 1.5}};

void writeFibres(Output& out) {
  using models::END_LOSS;
  const models::Events campus = {{0, 0.25, -52}, {1032.5, 0.08, 0}, {1610, 0.31, -48}, {2148, END_LOSS, -45}};
  const models::Events spliced = {{0, 0.3, -50}, {1904, 0.05, 0}, {3377.5, 2.41, 0}, {5320, END_LOSS, -14.7}};
  const models::Events metro = {{0, 0.2, -55}, {4100, 0.06, 0}, {8210, 0.61, -41}, {11840, END_LOSS, -45}};
  const models::Events cord = {{0, 0.22, -35}, {2, END_LOSS, -35}};
  const models::Events trunk = {{0, 0.2, -50}, {3120, 0.1, 0}, {24000, END_LOSS, -14.7}};
  const models::Events hall = {{0, 0.28, -38}, {61.5, 0.35, -36}, {250.5, 0.3, -37}, {312, END_LOSS, -35}};
  const models::Events riser = {{0, 0.7, -30}, {40, 0.78, -28}, {95, 0.88, -27}, {118, END_LOSS, -35}};
  writeTrace("otdr-pass", models::SINGLE_MODE_1310, campus, {30, 0.25, 16384}, out);
  writeTrace("otdr-fail", models::SINGLE_MODE_1310, spliced, {100, 0.5, 16384}, out);
  writeTrace("otdr-end1", models::SINGLE_MODE_1550, metro, {100, 0.5, 32768}, out);
  writeTrace("otdr-end2", models::SINGLE_MODE_1550, models::mirrored(metro), {100, 0.5, 32768}, out);
  writeTrace("patch-cord", models::OM4_850, cord, {3, 0.05, 8192}, out);
  writeTrace("real-time", models::SINGLE_MODE_1550, trunk, {300, 1, 8192}, out);
  writeLossLength("olts-pass", models::OM4_850, models::OM4_1300, hall, out);
  writeLossLength("olts-fail-star", models::OM4_850, models::OM4_1300, riser, out);
  writeEndFace("end-face-1", 3, out);
  writeEndFace("end-face-2", 31, out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
    return 2;
  }
  Output out{argv[1], {}};
  for (const CopperLink& link : COPPER_LINKS) CopperSweeps(link).writeTo(out);
  writeFibres(out);
  const auto size = static_cast<unsigned>(out.all.size());
  std::printf("%u bytes, CRC-32 %08x\n", size,
              PFile::crc32Of(reinterpret_cast<const unsigned char*>(out.all.data()), size));
  if (!out.good) std::fprintf(stderr, "%s: not every payload could be written\n", argv[1]);
  return out.good ? 0 : 1;
}
