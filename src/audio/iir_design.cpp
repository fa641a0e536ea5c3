// SPDX-License-Identifier: Apache-2.0
// Designs a filter: prototype poles, mapping to the band, bilinear transform, sections, gain.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>

#include "marlo110k/cpu.h"
#include "marlo110k/iir.h"

namespace {

using Complex = std::complex<double>;
constexpr double kPi = std::numbers::pi;
constexpr uint32_t kMaxOrder = 15;
constexpr uint32_t kMaxBesselOrder = 10;

/// Normalised Bessel poles, the upper half plane mirrored: order n starts at entry n * n / 4, an odd order with
/// its real pole.
constexpr tZRIIR_COMPLEX kBesselPoles[30] = {
    {-1, 0},
    {-0.8660254, -0.5},
    {-0.9416, 0},
    {-0.7456404, -0.7113666},
    {-0.9047588, -0.2709187},
    {-0.6572112, -0.8301614},
    {-0.9264421, 0},
    {-0.8515536, -0.4427175},
    {-0.5905759, -0.9072068},
    {-0.9093907, -0.1856964},
    {-0.7996542, -0.5621717},
    {-0.5385527, -0.9616877},
    {-0.9194872, 0},
    {-0.8800029, -0.3216653},
    {-0.7527355, -0.6504696},
    {-0.4966917, -1.002509},
    {-0.9096832, -0.1412438},
    {-0.8473251, -0.4259018},
    {-0.7111382, -0.7186517},
    {-0.462174, -1.034389},
    {-0.9154958, 0},
    {-0.8911217, -0.2526581},
    {-0.8148021, -0.5085816},
    {-0.6743623, -0.7730546},
    {-0.4331416, -1.060074},
    {-0.9091347, -0.1139583},
    {-0.868846, -0.3430008},
    {-0.7837694, -0.5759148},
    {-0.6417514, -0.8175836},
    {-0.4083221, -1.081275},
};

/// A prototype's poles: one of each conjugate pair (imaginary part above 0), and the real one of an odd order.
struct Prototype {
  Complex upper[kMaxOrder];
  uint32_t pairs = 0;
  bool hasReal = false;
  double real = 0;
};

Prototype ButterworthPoles(uint32_t order) {
  Prototype prototype;
  for (uint32_t k = 0; k < 2 * order; ++k) {
    const double turn = order % 2 == 0 ? k + 0.5 : k;
    const Complex pole = std::polar(1.0, turn * kPi / order);
    if (!(pole.real() < 0)) continue;
    if (std::abs(pole.imag()) < 1e-10) {
      prototype.hasReal = true;
      prototype.real = pole.real();
    } else if (pole.imag() > 0 && prototype.pairs < order / 2) {
      prototype.upper[prototype.pairs++] = pole;
    }
  }
  return prototype;
}

Prototype ChebyshevPoles(uint32_t order) {
  Prototype prototype = ButterworthPoles(order);
  const double ripple = std::sqrt(std::pow(10.0, 0.05) - 1);
  const double y = std::max(0.0, std::log(1 / ripple + std::sqrt(1 / (ripple * ripple) + 1)) / order);
  prototype.real *= std::sinh(y);
  for (uint32_t pair = 0; pair < prototype.pairs; ++pair) {
    Complex& pole = prototype.upper[pair];
    pole = {pole.real() * std::sinh(y), pole.imag() * std::cosh(y)};
  }
  return prototype;
}

Prototype BesselPoles(uint32_t order) {
  Prototype prototype;
  uint32_t entry = order * order / 4;
  if (order % 2 != 0) {
    prototype.hasReal = true;
    prototype.real = kBesselPoles[entry++].re;
  }
  for (; prototype.pairs < order / 2; ++entry) {
    prototype.upper[prototype.pairs++] = {kBesselPoles[entry].re, -kBesselPoles[entry].im};
  }
  return prototype;
}

Complex Bilinear(Complex s) { return (2.0 + s) / (2.0 - s); }

/// One section's poles and zeros in the z plane; a single one has no second.
struct RootPair {
  Complex poles[2];
  Complex zeros[2];
  bool single = false;

  /// Sharpness by which sections are ordered; a pole on the unit circle sorts last.
  double Q() const {
    if (single || poles[0].imag() == 0) return 0.5;
    const double r2 = std::norm(poles[0]);
    const double re = poles[0].real();
    const double q = std::sqrt((r2 + 1) * (r2 + 1) - 4 * re * re) / (2 * (1 - r2));
    return std::isfinite(q) && q >= 0 ? q : HUGE_VAL;
  }
};

class PairList {
 public:
  void Add(const RootPair& pair) { pairs_[count_++] = pair; }
  void SortByQ() {
    std::stable_sort(pairs_, pairs_ + count_,
                     [](const RootPair& left, const RootPair& right) { return left.Q() < right.Q(); });
  }
  uint32_t Count() const { return count_; }
  const RootPair& operator[](uint32_t index) const { return pairs_[index]; }

 private:
  RootPair pairs_[kZrIirMaxBiquads];
  uint32_t count_ = 0;
};

/// Band roots of prototype pole p: h (1 +- sqrt(1 - (w0 / h)^2)) with h the scaled pole. The second comes from
/// the product of both, which is w0 squared: a difference would lose its digits in a wide band.
void BandRoots(Complex h, double w0, Complex roots[2]) {
  const Complex root = std::sqrt(1.0 - (w0 / h) * (w0 / h));
  roots[0] = h * (1.0 + root);
  roots[1] = w0 * w0 / roots[0];
}

/// A pole pair of conjugates from its upper one.
RootPair ConjugatePair(Complex z, Complex zero0, Complex zero1) {
  RootPair pair;
  if (z.imag() < 0) z = std::conj(z);
  pair.poles[0] = z;
  pair.poles[1] = std::conj(z);
  pair.zeros[0] = zero0;
  pair.zeros[1] = zero1;
  return pair;
}

tZRIIR_COMPLEX Plain(Complex value) { return {value.real(), value.imag()}; }

/// All zero pairs of one design are equal, so that every assignment to pole pairs is the nearest one.
void FillSections(const PairList& pairs, tZRIIR_POLYNOMIAL& polynomial, tZRIIR_BIQUAD* biquads, uint32_t& numBiquads) {
  for (uint32_t index = 0; index < pairs.Count(); ++index) {
    const RootPair& pair = pairs[index];
    for (int root = 0; root < (pair.single ? 1 : 2); ++root) {
      polynomial.poles[polynomial.numPoles++] = Plain(pair.poles[root]);
      polynomial.zeros[polynomial.numZeros++] = Plain(pair.zeros[root]);
    }
  }
  numBiquads = 0;
  for (uint32_t index = pairs.Count(); index-- > 0;) {
    const RootPair& pair = pairs[index];
    tZRIIR_BIQUAD& section = biquads[numBiquads++];
    section.b0 = 1;
    if (pair.single) {
      section.b1 = -pair.zeros[0].real();
      section.a1 = pair.poles[0].real();
      continue;
    }
    section.b1 = -(pair.zeros[0] + pair.zeros[1]).real();
    section.b2 = (pair.zeros[0] * pair.zeros[1]).real();
    section.a1 = (pair.poles[0] + pair.poles[1]).real();
    // The product with its sign: a wide band-pass has two real poles, one of them below 0.
    section.a2 = -(pair.poles[0] * pair.poles[1]).real();
  }
}

Complex SectionResponse(double b1, double b2, double a1, double a2, Complex z) {
  const Complex back = 1.0 / z;
  return (1.0 + (b1 + b2 * back) * back) / (1.0 - (a1 + a2 * back) * back);
}

}  // namespace

CZrIIR::CZrIIR() noexcept { std::memset(static_cast<void*>(this), 0, sizeof(*this)); }

CZrIIR::CZrIIR(const CZrIIR* other) noexcept : CZrIIR() {
  if (other != nullptr) *this = *other;
}

HRESULT CZrIIR::Design(uint32_t type, uint32_t design, uint32_t order, double f1, double f2, double gainDb,
                       uint32_t channels, uint32_t flags) noexcept {
  std::memset(static_cast<void*>(this), 0, sizeof(*this));
  if (!(f1 <= 0.5) || std::isnan(f2) || std::isnan(gainDb)) return E_INVALIDARG;
  double lower = f1;
  double upper = f1;
  if (design == ZRIIR_RESONATOR) {
    const HRESULT result = DesignResonator(type, f1, f2);
    if (FAILED(result)) return result;
  } else {
    if (type > ZRIIR_BANDPASS || design > ZRIIR_RESONATOR) return E_INVALIDARG;
    if (order < 1 || order > kMaxOrder) return E_INVALIDARG;
    if (design == ZRIIR_BESSEL && order > kMaxBesselOrder) return E_INVALIDARG;
    if (type == ZRIIR_BANDSTOP && gainDb != 0) {
      type = ZRIIR_BANDPASS;
      gainDb = -gainDb;
    }
    if (type == ZRIIR_BANDSTOP || type == ZRIIR_BANDPASS) {
      const double s = std::sqrt(std::pow(2.0, f2));
      lower = f1 / s;
      upper = std::min(f1 * s, 0.5);
    }
    const HRESULT result = DesignPrototype(type, design, order, lower, upper);
    if (FAILED(result)) return result;
  }
  Normalize(type, lower, upper, gainDb);
  lastChannelMask_ = 3;
  channels_ = channels;
  if (channels == 2 && (flags & ZRIIR_NO_SSE2) == 0) useSse2_ = ZrGetCPUSupport(ZRCPU_FEATURES) & ZRCPU_SSE2;
  return S_OK;
}

HRESULT CZrIIR::DesignPrototype(uint32_t type, uint32_t design, uint32_t order, double lower, double upper) noexcept {
  const Prototype prototype = design == ZRIIR_BUTTERWORTH ? ButterworthPoles(order)
                              : design == ZRIIR_CHEBYSHEV ? ChebyshevPoles(order)
                                                          : BesselPoles(order);
  const double w1 = std::tan(kPi * lower) / kPi * 2 * kPi;
  const double w2 = std::tan(kPi * upper) / kPi * 2 * kPi;
  const double w0 = std::sqrt(w1 * w2);
  const double bw = w2 - w1;
  tZRIIR_POLYNOMIAL& plane = polynomials_[0];
  PairList pairs;

  const auto addPole = [&](Complex s) { plane.poles[plane.numPoles++] = Plain(s); };
  const auto addZero = [&](Complex s) { plane.zeros[plane.numZeros++] = Plain(s); };
  const auto addConjugates = [&](Complex s, Complex zero0, Complex zero1) {
    if (s.imag() < 0) s = std::conj(s);
    addPole(s);
    addPole(std::conj(s));
    pairs.Add(ConjugatePair(Bilinear(s), zero0, zero1));
  };

  if (type == ZRIIR_LOWPASS || type == ZRIIR_HIGHPASS) {
    const bool low = type == ZRIIR_LOWPASS;
    const Complex zero = low ? Complex(-1.0) : Complex(1.0);
    const auto map = [&](Complex pole) { return low ? pole * w1 : w1 / pole; };
    for (uint32_t pair = 0; pair < prototype.pairs; ++pair) addConjugates(map(prototype.upper[pair]), zero, zero);
    if (prototype.hasReal) {
      const Complex s = map(prototype.real);
      addPole(s);
      RootPair single;
      single.single = true;
      single.poles[0] = Bilinear(s).real();
      single.zeros[0] = zero;
      pairs.Add(single);
    }
    for (uint32_t pole = 0; !low && pole < order; ++pole) addZero(0.0);
  } else {
    const bool pass = type == ZRIIR_BANDPASS;
    const Complex stop = Bilinear(Complex(0, w0));
    const Complex zero0 = pass ? Complex(1.0) : stop;
    const Complex zero1 = pass ? Complex(-1.0) : std::conj(stop);
    const auto scale = [&](Complex pole) { return pass ? pole * bw / 2.0 : (bw / pole) / 2.0; };
    for (uint32_t pair = 0; pair < prototype.pairs; ++pair) {
      Complex roots[2];
      BandRoots(scale(prototype.upper[pair]), w0, roots);
      addConjugates(roots[0], zero0, zero1);
      addConjugates(roots[1], zero0, zero1);
    }
    if (prototype.hasReal) {
      Complex roots[2];
      BandRoots(scale(prototype.real), w0, roots);
      if (roots[0].imag() != 0) {
        addConjugates(roots[0], zero0, zero1);
      } else {
        addPole(roots[0]);
        addPole(roots[1]);
        RootPair pair;
        for (int root = 0; root < 2; ++root) pair.poles[root] = Bilinear(roots[root]).real();
        pair.zeros[0] = zero0;
        pair.zeros[1] = zero1;
        pairs.Add(pair);
      }
    }
    for (uint32_t pole = 0; pole < order; ++pole) {
      addZero(pass ? Complex(0.0) : Complex(0, w0));
      if (!pass) addZero(Complex(0, -w0));
    }
  }
  pairs.SortByQ();
  FillSections(pairs, polynomials_[1], biquads_, numBiquads_);
  return S_OK;
}

HRESULT CZrIIR::DesignResonator(uint32_t type, double f1, double q) noexcept {
  if (type != ZRIIR_BANDSTOP && type != ZRIIR_BANDPASS) return E_INVALIDARG;
  const double centre = 2 * kPi * f1;
  const double radius = std::exp(-centre / (2 * q));
  PairList pairs;
  if (type == ZRIIR_BANDSTOP) {
    const Complex zero = std::polar(1.0, centre);
    pairs.Add(ConjugatePair(std::polar(radius, centre), zero, std::conj(zero)));
  } else {
    // The pole angle is moved until the phase of the response is 0 at the centre.
    double low = std::max(0.0, centre - 1 / q);
    double high = std::min(kPi, centre + 1 / q);
    double angle = centre;
    const Complex z = std::polar(1.0, centre);
    constexpr int kRounds = 50;
    int round = 0;
    for (;; ++round) {
      if (round == kRounds) return E_FAIL;
      const Complex response = SectionResponse(0, -1, 2 * radius * std::cos(angle), -radius * radius, z);
      const double ratio = response.imag() / response.real();
      if (std::abs(ratio) <= 1e-10) break;
      if (ratio > 0) {
        high = angle;
      } else {
        low = angle;
      }
      angle = (low + high) / 2;
    }
    pairs.Add(ConjugatePair(std::polar(radius, angle), 1.0, -1.0));
  }
  FillSections(pairs, polynomials_[1], biquads_, numBiquads_);
  return S_OK;
}

void CZrIIR::Normalize(uint32_t type, double lower, double upper, double gainDb) noexcept {
  const auto response = [&](Complex z) {
    Complex product = 1.0;
    for (uint32_t index = 0; index < numBiquads_; ++index) {
      const tZRIIR_BIQUAD& section = biquads_[index];
      product *= SectionResponse(section.b1, section.b2, section.a1, section.a2, z);
    }
    return product;
  };
  double level = 0;
  switch (type) {
    case ZRIIR_LOWPASS:
      level = response(1.0).real();
      break;
    case ZRIIR_HIGHPASS:
      level = response(-1.0).real();
      break;
    case ZRIIR_BANDPASS:
      level = std::abs(response(std::polar(1.0, -kPi * (lower + upper))));
      break;
    default:
      level = std::sqrt(response(1.0).real() * response(-1.0).real());
      break;
  }
  gain_ = level == 0 ? 1 : 1 / level;
  if (gainDb != 0) {
    dry_ = 1;
    gain_ *= std::pow(10.0, gainDb / 20) - 1;
  }
}

const tZRIIR_POLYNOMIAL* CZrIIR::getPolynomial(uint32_t index) const noexcept {
  return index < 2 ? &polynomials_[index] : nullptr;
}

const tZRIIR_BIQUAD* CZrIIR::getBiquad(uint32_t index) const noexcept {
  return index < numBiquads_ ? &biquads_[index] : nullptr;
}
