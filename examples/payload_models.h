#pragma once

/// The models of cables and fibres that make_payloads computes from, and the arithmetic it does so with. Every machine
/// gets the same numbers: nothing is used but + - * / and sqrt, which IEEE 754 rounds alike everywhere, and the whole
/// numbers of std::mt19937. Of std::log10 and std::pow the last bit depends on the machine.

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

namespace models {

constexpr double LN_2 = 0.69314718055994531;
constexpr double LN_10 = 2.3025850929940457;

/// Decimal logarithm, from ln m = 2 artanh((m - 1) / (m + 1)).
inline double lg(double x) {
  int exponent = 0;
  const double m = std::frexp(x, &exponent);
  const double t = (m - 1) / (m + 1);
  double sum = 0;
  for (int k = 39; k > 0; k -= 2) sum = sum * t * t + 1.0 / k;
  return (2 * t * sum + exponent * LN_2) / LN_10;
}

/// 10 to the power of x, from the exponential series.
inline double tenTo(double x) {
  const double twos = std::floor(x * LN_10 / LN_2);
  const double rest = x * LN_10 - twos * LN_2;
  double sum = 1;
  for (int k = 20; k > 0; --k) sum = 1 + rest / k * sum;
  return std::ldexp(sum, static_cast<int>(twos));
}

inline double uniform(std::mt19937& random) {
  return static_cast<double>(random()) / 4294967296.0;
}

/// Mean 0 and deviation 1, near enough to a normal distribution: the sum of twelve uniform numbers.
inline double noise(std::mt19937& random) {
  double sum = -6;
  for (int i = 0; i < 12; ++i) sum += uniform(random);
  return sum;
}

// Copper: TIA-568.2-D, category 6A, which class EA of ISO/IEC 11801-1 equals. f in MHz, 1 to 500; results in dB.

/// Insertion loss of 100 m of cable: k1 sqrt(f) + k2 f + k3 / sqrt(f).
inline double cableLoss(double f) {
  return 1.82 * std::sqrt(f) + 0.0091 * f + 0.25 / std::sqrt(f);
}

inline double connectorLoss(double f) {
  return 0.02 * std::sqrt(f);
}

/// Propagation delay of 100 m of cable, ns.
inline double cableDelay(double f) {
  return 534 + 36 / std::sqrt(f);
}

constexpr double CONDUCTOR_RESISTANCE = 9.38;  ///< ohm for 100 m of one conductor

// Limits of a permanent link: 90 m of cable and three connectors.

inline double insertionLossLimit(double f) {
  return 0.9 * cableLoss(f) + 3 * connectorLoss(f);
}

inline double returnLossLimit(double f) {
  if (f < 3) return 21 + 4 * lg(f / 3);
  if (f < 10) return 21;
  return f < 40 ? 26 - 5 * lg(f) : std::max(34 - 10 * lg(f), 8.0);
}

/// Near-end crosstalk: that of the cable and that of the near connector, added as voltages.
inline double nextLimit(double f) {
  if (f > 300) return 34 - 33.13 * lg(f / 300);
  return std::min(65.0, -20 * lg(tenTo((74.3 - 15 * lg(f)) / -20) + tenTo((94 - 20 * lg(f)) / -20)));
}

/// Largest step of a sweep, kHz: TIA-1152-A.
inline unsigned stepAt(unsigned kHz) {
  return kHz < 31250 ? 150 : kHz < 100000 ? 250 : kHz < 250000 ? 500 : 1000;
}

// Fibre.

struct Medium {
  unsigned wavelength;  ///< nm
  double attenuation;   ///< dB/km, of the model
  double allowed;       ///< dB/km, TIA-568.3-D: outside plant single mode, OM4 multimode
  double backscatter;   ///< dB of a pulse of 1 ns, as OTDRs are commonly set
};

constexpr Medium SINGLE_MODE_1310{1310, 0.34, 0.5, -79.5};  // ITU-T G.652.D: up to 0.4 dB/km
constexpr Medium SINGLE_MODE_1550{1550, 0.20, 0.5, -81.5};  // up to 0.3
constexpr Medium OM4_850{850, 2.3, 3.0, -68.0};             // IEC 60793-2-10 A1-OM4: up to 2.5
constexpr Medium OM4_1300{1300, 0.6, 1.5, -75.7};           // up to 0.8

struct Event {
  double at;           ///< m from the instrument
  double loss;         ///< dB
  double reflectance;  ///< dB; 0 where nothing is reflected, as at a splice
};

/// From the launch connector, at 0, to the end of the fibre.
using Events = std::vector<Event>;

constexpr double END_LOSS = 30;  ///< dB; after the end there is only noise

/// Loss of a link in dB. Without a cord after it, nothing is known of its last connector.
inline double linkLoss(const Medium& medium, const Events& events) {
  double loss = medium.attenuation * events.back().at / 1000;
  for (std::size_t i = 0; i + 1 < events.size(); ++i) loss += events[i].loss;
  return loss;
}

/// What TIA-568.3-D allows the same link: 0.75 dB for a connector, 0.3 dB for a splice.
inline double lossLimit(const Medium& medium, const Events& events) {
  double limit = medium.allowed * events.back().at / 1000;
  for (std::size_t i = 0; i + 1 < events.size(); ++i) limit += events[i].reflectance < 0 ? 0.75 : 0.3;
  return limit;
}

/// The same fibre from its other end.
inline Events mirrored(const Events& events) {
  Events other;
  for (const Event& event : events)
    other.insert(other.begin(), {events.back().at - event.at, event.loss, event.reflectance});
  std::swap(other.front().loss, other.back().loss);
  return other;
}

struct Range {
  double pulse;    ///< ns
  double spacing;  ///< m from sample to sample
  unsigned samples;
};

/// An OTDR trace in dB of one-way loss, the launch at 40: 5 lg of the power, which backscatter loses there and back.
/// A reflection R stands 10^((R - B) / 10) / pulse above the backscatter B for the length of the pulse (IEC 61300-3-6,
/// OTDR method). The receiver has one pole, and its noise equals the backscatter of the launch 20 dB further on.
inline std::vector<double> otdrTrace(const Medium& medium, const Events& events, const Range& range) {
  constexpr double RECEIVER_LENGTH = 1.5;        // m of fibre in the receiver's time constant
  const double pulseLength = range.pulse * 0.1;  // m of fibre that a pulse covers, there and back
  std::mt19937 random(range.samples);
  std::vector<double> levels;
  double received = 0;
  for (unsigned i = 0; i < range.samples; ++i) {
    const double at = i * range.spacing;
    double loss = medium.attenuation * at / 1000, reflected = 0;
    for (const Event& event : events) {
      if (at < event.at) break;
      if (event.reflectance < 0 && at < event.at + pulseLength) {
        reflected += tenTo(-loss / 5) * tenTo((event.reflectance - medium.backscatter) / 10) / range.pulse;
      }
      loss += event.loss;
    }
    received += (tenTo(-loss / 5) + reflected - received) * std::min(1.0, range.spacing / RECEIVER_LENGTH);
    levels.push_back(40 + 5 * lg(std::max(received + 1e-4 * noise(random), 1e-8)));
  }
  return levels;
}

}  // namespace models
