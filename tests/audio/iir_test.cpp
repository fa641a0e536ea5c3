// SPDX-License-Identifier: Apache-2.0
// Filters: responses against the closed forms of their families, sections, running, channel masks.
#include "marlo110k/iir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "marlo110k/cpu.h"
#include "testing/random.h"

namespace {

using Complex = std::complex<double>;
constexpr double kPi = std::numbers::pi;

/// The magnitude that an object's own coefficients give at a frequency.
double Magnitude(const CZrIIR& filter, double frequency) {
  const Complex z = std::polar(1.0, 2 * kPi * frequency);
  Complex numerator = filter.getGain();
  Complex denominator = 1.0;
  for (uint32_t index = 0; index < filter.getNumBiquads(); ++index) {
    const tZRIIR_BIQUAD& section = *filter.getBiquad(index);
    numerator *= section.b0 * z * z + section.b1 * z + section.b2;
    denominator *= z * z - section.a1 * z - section.a2;
  }
  return std::abs(numerator / denominator + filter.getDry());
}

// The Bessel table by order, upper half plane and real poles, for the responses below.
const std::vector<std::vector<Complex>> kBessel = {
    {{-1, 0}},
    {{-0.8660254, 0.5}},
    {{-0.9416, 0}, {-0.7456404, 0.7113666}},
    {{-0.9047588, 0.2709187}, {-0.6572112, 0.8301614}},
    {{-0.9264421, 0}, {-0.8515536, 0.4427175}, {-0.5905759, 0.9072068}},
    {{-0.9093907, 0.1856964}, {-0.7996542, 0.5621717}, {-0.5385527, 0.9616877}},
    {{-0.9194872, 0}, {-0.8800029, 0.3216653}, {-0.7527355, 0.6504696}, {-0.4966917, 1.002509}},
};

double BesselMagnitude(uint32_t order, double omega) {
  Complex product = 1.0;
  for (const Complex& pole : kBessel[order - 1]) {
    product *= pole / (pole - Complex(0, omega));
    if (pole.imag() != 0) product *= std::conj(pole) / (std::conj(pole) - Complex(0, omega));
  }
  return std::abs(product);
}

/// The prototype's magnitude at `omega`, 1 at 0.
double PrototypeMagnitude(uint32_t design, uint32_t order, double omega) {
  omega = std::abs(omega);
  if (design == ZRIIR_BUTTERWORTH) return 1 / std::sqrt(1 + std::pow(omega, 2.0 * order));
  if (design == ZRIIR_BESSEL) return BesselMagnitude(order, omega);
  const double ripple2 = std::pow(10.0, 0.05) - 1;
  const auto chebyshev = [&](double x) {
    return x <= 1 ? std::cos(order * std::acos(x)) : std::cosh(order * std::acosh(x));
  };
  const double atZero = order % 2 == 0 ? 1.0 : 0.0;
  return std::sqrt((1 + ripple2 * atZero) / (1 + ripple2 * std::pow(chebyshev(omega), 2)));
}

/// The digital response through the frequency mapping of the bilinear transform, no pole in sight.
double ClosedForm(uint32_t type, uint32_t design, uint32_t order, double f1, double octaves, double frequency) {
  const double warped = std::tan(kPi * frequency);
  const bool band = type == ZRIIR_BANDPASS || type == ZRIIR_BANDSTOP;
  const double lower = band ? f1 / std::sqrt(std::exp2(octaves)) : f1;
  const double upper = band ? std::min(f1 * std::sqrt(std::exp2(octaves)), 0.5) : f1;
  const double w1 = std::tan(kPi * lower);
  const double w2 = std::tan(kPi * upper);
  switch (type) {
    case ZRIIR_LOWPASS:
      return PrototypeMagnitude(design, order, warped / w1);
    case ZRIIR_HIGHPASS:
      return PrototypeMagnitude(design, order, w1 / warped);
    case ZRIIR_BANDPASS: {
      // Scaled to 1 at the mean of the corners, not at the centre.
      const auto pass = [&](double w) {
        return PrototypeMagnitude(design, order, (w * w - w1 * w2) / ((w2 - w1) * w));
      };
      return pass(warped) / pass(std::tan(kPi * (lower + upper) / 2));
    }
    default:
      return PrototypeMagnitude(design, order, (w2 - w1) * warped / (w1 * w2 - warped * warped));
  }
}

struct FamilyCase {
  const char* name;
  uint32_t design;
  uint32_t maxOrder;
};

class IirFamily : public testing::TestWithParam<FamilyCase> {};

TEST_P(IirFamily, ResponseFollowsTheClosedForm) {
  for (uint32_t type = 0; type < 4; ++type) {
    for (uint32_t order = 1; order <= GetParam().maxOrder; ++order) {
      for (const double f1 : {0.02, 0.1, 0.2375, 0.31}) {
        for (const double octaves : {0.5, 1.0, 2.5}) {
          if (type < 2 && octaves != 1.0) continue;
          if (type >= 2 && f1 * std::sqrt(std::exp2(octaves)) > 0.48)
            continue;  // The edge is held at 0.5: no closed form.
          CZrIIR filter;
          ASSERT_EQ(filter.Design(type, GetParam().design, order, f1, octaves, 0, 2, 0), S_OK);
          for (double frequency = 0.01; frequency < 0.5; frequency += 0.0173) {
            const double expected = ClosedForm(type, GetParam().design, order, f1, octaves, frequency);
            ASSERT_NEAR(Magnitude(filter, frequency), expected, 1e-10 * std::max(1.0, expected))
                << "type " << type << " order " << order << " f1 " << f1 << " octaves " << octaves << " at "
                << frequency;
          }
        }
      }
    }
  }
}

// The closed forms lose digits with the order (powers of tan far from the corner), hence the orders here;
// the higher ones are covered by the factored forms below.
INSTANTIATE_TEST_SUITE_P(All, IirFamily,
                         testing::Values(FamilyCase{"Butterworth", ZRIIR_BUTTERWORTH, 6},
                                         FamilyCase{"Chebyshev", ZRIIR_CHEBYSHEV, 6},
                                         FamilyCase{"Bessel", ZRIIR_BESSEL, 6}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(IirDesign, ButterworthSectionsEqualTheCornerForm) {
  // Section k of an order-n low-pass: K = tan(pi f), 1/Q = 2 cos of the pole's angle from the real axis.
  for (uint32_t order = 1; order <= 15; ++order) {
    for (const double f1 : {0.01, 0.1, 0.25, 0.45}) {
      CZrIIR filter;
      ASSERT_EQ(filter.Design(ZRIIR_LOWPASS, ZRIIR_BUTTERWORTH, order, f1, 0, 0, 2, 0), S_OK);
      ASSERT_EQ(filter.getNumBiquads(), (order + 1) / 2);
      const double k = std::tan(kPi * f1);
      std::vector<double> wanted;
      for (uint32_t pair = 0; pair < order / 2; ++pair) {
        const double inverseQ = 2 * std::cos(kPi * (order - 1 - 2.0 * pair) / (2.0 * order));
        wanted.push_back((1 - inverseQ * k + k * k) / (1 + inverseQ * k + k * k));
      }
      if (order % 2 != 0) wanted.push_back(0);
      std::vector<double> got;
      for (uint32_t index = 0; index < filter.getNumBiquads(); ++index) got.push_back(-filter.getBiquad(index)->a2);
      std::sort(wanted.begin(), wanted.end());
      std::sort(got.begin(), got.end());
      for (size_t index = 0; index < got.size(); ++index) {
        ASSERT_NEAR(got[index], wanted[index], 1e-12 * std::max(1.0, std::abs(wanted[index]))) << order << " " << f1;
      }
    }
  }
}

TEST(IirDesign, SharpestSectionComesFirstAndTheSinglePoleLast) {
  CZrIIR filter;
  ASSERT_EQ(filter.Design(ZRIIR_LOWPASS, ZRIIR_CHEBYSHEV, 7, 0.2, 0, 0, 2, 0), S_OK);
  ASSERT_EQ(filter.getNumBiquads(), 4u);
  EXPECT_EQ(filter.getBiquad(3)->a2, 0);
  for (uint32_t index = 1; index < 3; ++index)
    EXPECT_GT(filter.getBiquad(index - 1)->a2 * -1, -filter.getBiquad(index)->a2);
  EXPECT_EQ(filter.getBiquad(4), nullptr);
  EXPECT_EQ(filter.getPolynomial(1)->numPoles, 7u);
  EXPECT_EQ(filter.getPolynomial(1)->numZeros, 7u);
  EXPECT_EQ(filter.getPolynomial(0)->numZeros, 0u);
  EXPECT_EQ(filter.getPolynomial(2), nullptr);
}

TEST(IirDesign, GainMovesThePassBandOnly) {
  struct Row {
    uint32_t type;
    double centre, far;
  };
  for (const Row& row :
       {Row{ZRIIR_LOWPASS, 0.0001, 0.499}, Row{ZRIIR_HIGHPASS, 0.4999, 0.001}, Row{ZRIIR_BANDPASS, 0.1, 0.4999}}) {
    for (const double db : {-12.0, 6.0}) {
      CZrIIR filter;
      ASSERT_EQ(filter.Design(row.type, ZRIIR_BUTTERWORTH, 2, 0.1, 0.2, db, 2, 0), S_OK);
      EXPECT_NEAR(20 * std::log10(Magnitude(filter, row.centre)), db, 0.05) << row.type;
      EXPECT_NEAR(20 * std::log10(Magnitude(filter, row.far)), 0, 0.05) << row.type;
    }
  }
  // A band-stop with a gain is the band-pass of the negated one over the dry signal.
  CZrIIR cut;
  ASSERT_EQ(cut.Design(ZRIIR_BANDSTOP, ZRIIR_BUTTERWORTH, 1, 0.1, 1, 6, 2, 0), S_OK);
  EXPECT_EQ(cut.getDry(), 1);
  EXPECT_NEAR(Magnitude(cut, 0.1), 0.4966326404, 1e-10);  // Worked out by hand from the section.
  EXPECT_NEAR(Magnitude(cut, 0), 1, 1e-12);
}

TEST(IirDesign, ResonatorPeaksAndNotchesAtItsCentre) {
  for (const double f1 : {0.01, 0.1, 0.25, 0.4}) {
    for (const double q : {2.0, 10.0, 40.0}) {
      CZrIIR notch;
      ASSERT_EQ(notch.Design(ZRIIR_BANDSTOP, ZRIIR_RESONATOR, 0, f1, q, 0, 2, 0), S_OK);
      EXPECT_LT(Magnitude(notch, f1), 1e-12);
      CZrIIR peak;
      ASSERT_EQ(peak.Design(ZRIIR_BANDPASS, ZRIIR_RESONATOR, 0, f1, q, 0, 2, 0), S_OK);
      EXPECT_NEAR(Magnitude(peak, f1), 1, 1e-9);
      EXPECT_LT(Magnitude(peak, f1 * 0.98), 1);
      EXPECT_LT(Magnitude(peak, f1 * 1.02), 1);
    }
  }
}

TEST(IirDesign, RefusesBadArgumentsAndLeavesAnEmptyFilter) {
  struct Row {
    uint32_t type, design, order;
    double f1, f2;
    HRESULT result;
  };
  const Row rows[] = {
      {0, 0, 2, 0.5, 0, S_OK},          {0, 0, 2, 0.50001, 0, E_INVALIDARG},
      {0, 0, 0, 0.1, 0, E_INVALIDARG},  {0, 0, 16, 0.1, 0, E_INVALIDARG},
      {0, 0, 15, 0.1, 0, S_OK},         {0, 2, 10, 0.1, 0, S_OK},
      {0, 2, 11, 0.1, 0, E_INVALIDARG}, {4, 0, 2, 0.1, 0, E_INVALIDARG},
      {0, 4, 2, 0.1, 0, E_INVALIDARG},  {0, 3, 2, 0.1, 5, E_INVALIDARG},
      {1, 3, 2, 0.1, 5, E_INVALIDARG},  {3, 0, 15, 0.1, 1, S_OK},
      {0, 0, 2, NAN, 0, E_INVALIDARG},  {3, 0, 2, 0.1, NAN, E_INVALIDARG},
  };
  for (const Row& row : rows) {
    CZrIIR filter;
    ASSERT_EQ(filter.Design(0, 0, 2, 0.2, 0, 0, 2, 0), S_OK);
    EXPECT_EQ(filter.Design(row.type, row.design, row.order, row.f1, row.f2, 0, 2, 0), row.result)
        << row.type << row.design << row.order << " " << row.f1;
    if (FAILED(row.result)) {
      EXPECT_EQ(filter.getNumBiquads(), 0u);
      double sample[2] = {1, -1};
      filter.ProcessDouble(sample, sample, 2, 0);
      EXPECT_EQ(sample[0], 0);
      EXPECT_EQ(sample[1], 0);
    }
  }
}

/// The cascade written out with plain variables, section after section over the whole signal.
std::vector<double> Reference(const CZrIIR& filter, std::vector<double> signal) {
  const std::vector<double> input = signal;
  for (double& x : signal) x *= filter.getGain();
  for (uint32_t index = 0; index < filter.getNumBiquads(); ++index) {
    const tZRIIR_BIQUAD section = *filter.getBiquad(index);
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    for (double& x : signal) {  // Direct form I: another order of sums, so compared with a tolerance.
      const double y = section.b0 * x + section.b1 * x1 + section.b2 * x2 + section.a1 * y1 + section.a2 * y2;
      x2 = x1;
      x1 = x;
      y2 = y1;
      y1 = y;
      x = y;
    }
  }
  for (size_t n = 0; n < signal.size(); ++n) signal[n] += filter.getDry() * input[n];
  return signal;
}

TEST(IirRun, ImpulseOfTheKnownLowPass) {
  CZrIIR filter;
  ASSERT_EQ(filter.Design(ZRIIR_LOWPASS, ZRIIR_BUTTERWORTH, 2, 0.25, 0, 0, 1, 0), S_OK);
  double impulse[5] = {1};
  filter.ProcessDouble(impulse, impulse, 5, 1);
  const double wanted[5] = {.292893218813452, .585786437626905, .242640687119285, -.100505063388335,
                            -.0416305603426159};
  for (int n = 0; n < 5; ++n) EXPECT_NEAR(impulse[n], wanted[n], 1e-14);
}

TEST(IirRun, VectorAndPlainGiveTheSameBitsInAnyBlocks) {
  testing_support::Random random(0x11F);
  SCOPED_TRACE(random.Label());
  for (const uint32_t order : {1u, 2u, 3u, 5u, 8u, 11u, 15u}) {
    CZrIIR vector, plain;
    ASSERT_EQ(vector.Design(ZRIIR_BANDPASS, ZRIIR_CHEBYSHEV, order, 0.1, 1, 3, 2, 0), S_OK);
    ASSERT_EQ(plain.Design(ZRIIR_BANDPASS, ZRIIR_CHEBYSHEV, order, 0.1, 1, 3, 2, ZRIIR_NO_SSE2), S_OK);
    std::vector<float> source(2 * 700);
    for (float& sample : source) sample = static_cast<float>(random.Real(-1, 1));
    std::vector<float> expected(source.size());
    plain.ProcessFloat(expected.data(), source.data(), 700, 3);
    std::vector<float> got = source;  // In place and in uneven blocks.
    for (uint32_t frame = 0; frame < 700;) {
      const auto block = std::min<uint32_t>(700 - frame, static_cast<uint32_t>(random.Between(0, 33)));
      vector.ProcessFloat(&got[2 * frame], &got[2 * frame], block, 0);
      frame += block;
    }
    EXPECT_EQ(got, expected) << order;
    std::vector<double> left;
    for (size_t n = 0; n < source.size(); n += 2) left.push_back(source[n]);
    left = Reference(plain, left);
    for (size_t n = 0; n < left.size(); ++n) ASSERT_NEAR(expected[2 * n], left[n], 2e-6);
  }
}

TEST(IirRun, ChannelOutsideTheMaskStaysAndReentersCleared) {
  CZrIIR filter;
  ASSERT_EQ(filter.Design(ZRIIR_LOWPASS, ZRIIR_BUTTERWORTH, 2, 0.1, 0, 0, 2, 0), S_OK);
  double first[4] = {1, 1, 1, 1};
  filter.ProcessDouble(first, first, 2, 3);
  double second[4] = {1, 7, 1, 7};
  filter.ProcessDouble(second, second, 2, 1);
  EXPECT_EQ(second[1], 7);
  EXPECT_EQ(second[3], 7);
  EXPECT_GT(second[0], first[2]);
  double third[2] = {1, 1};
  filter.ProcessDouble(third, third, 1, 3);
  EXPECT_GT(third[0], second[2]);  // Channel 0 goes on.
  EXPECT_EQ(third[1], first[1]);   // Channel 1 starts anew.
  EXPECT_EQ(filter.getLastChannelMask(), 3u);
}

TEST(IirRun, SilenceEndsInExactZeros) {
  CZrIIR filter;
  ASSERT_EQ(filter.Design(ZRIIR_LOWPASS, ZRIIR_CHEBYSHEV, 4, 0.1, 0, 0, 2, 0), S_OK);
  std::vector<double> signal(2 * 20000);
  signal[0] = signal[1] = 1;
  filter.ProcessDouble(signal.data(), signal.data(), 20000, 3);
  EXPECT_EQ(signal.back(), 0);
  for (uint32_t index = 0; index < filter.getNumBiquads(); ++index) {
    EXPECT_EQ(filter.getBiquad(index)->d1[0], 0);
    EXPECT_EQ(filter.getBiquad(index)->d2[1], 0);
  }
}

TEST(IirRun, CopiesAndHandsOverDelays) {
  CZrIIR running;
  ASSERT_EQ(running.Design(ZRIIR_LOWPASS, ZRIIR_BUTTERWORTH, 4, 0.1, 0, 0, 2, 0), S_OK);
  double block[4] = {1, -1, 0.5, 0.25};
  running.ProcessDouble(block, block, 2, 3);
  CZrIIR copy(&running);
  CZrIIR next;
  ASSERT_EQ(next.Design(ZRIIR_LOWPASS, ZRIIR_BUTTERWORTH, 4, 0.1, 0, 0, 2, 0), S_OK);
  next.SetDelayElementsFrom(&running);
  double a[2] = {1, 1}, b[2] = {1, 1}, c[2] = {1, 1};
  running.ProcessDouble(a, a, 1, 3);
  copy.ProcessDouble(b, b, 1, 3);
  next.ProcessDouble(c, c, 1, 3);
  EXPECT_EQ(a[0], b[0]);
  EXPECT_EQ(a[1], c[1]);
  const CZrIIR empty(nullptr);
  EXPECT_EQ(empty.getNumBiquads(), 0u);
  EXPECT_EQ(empty.getGain(), 0);
}

TEST(IirFinders, GiveTheDocumentedValues) {
  // Worked out by hand from the formulas at 44100 Hz.
  tZRIIR_SHELF_COEFFS shelf;
  tZRIIR_FIND_COEFFS request = {300.0 / 44100, -12, 0.5};
  ZrIIR_FindLowShelfCutCoeffs(&shelf, &request);
  EXPECT_NEAR(shelf.a1, 1.96114778979117, 1e-13);
  EXPECT_NEAR(shelf.a2, .961888199320736, 1e-13);
  EXPECT_NEAR(shelf.scale, .00074040952957, 1e-13);
  EXPECT_NEAR(shelf.dry, .501187233627272, 1e-13);
  EXPECT_EQ(shelf.wet, 1 - shelf.dry);
  request.gainDb = -25;
  ZrIIR_FindLowShelfCutCoeffs(&shelf, &request);
  EXPECT_EQ(shelf.dry, 0);
  request = {0.1, 6, 0.5};
  ZrIIR_FindLowShelfBoostCoeffs(&shelf, &request);
  EXPECT_NEAR(shelf.wet, .412537544622754, 1e-13);
  ZrIIR_FindHiShelfBoostCoeffs(&shelf, &request);
  EXPECT_EQ(shelf.scale, 1);
  EXPECT_NEAR(shelf.fir, .601866262899574, 1e-13);
  request = {0.2, -12, 0.5};
  ZrIIR_FindHiShelfCutCoeffs(&shelf, &request);
  EXPECT_NEAR(shelf.fir, .589766364119921, 1e-13);
  EXPECT_NEAR(shelf.a2, std::exp(-2 * kPi * 0.104 / 0.5), 1e-13);
  EXPECT_NEAR(shelf.wet, -.498812766372768, 1e-13);
  request = {0.125, -30, 0.5};
  ZrIIR_FindHiShelfCutCoeffs(&shelf, &request);
  EXPECT_NEAR(shelf.a2, std::exp(-2 * kPi * 0.05 / 0.5), 1e-13);
  EXPECT_EQ(shelf.wet, -1);

  tZRIIR_BANDPASS_COEFFS peak;
  struct Row {
    double frequency, db, q, k;
  };
  for (const Row& row :
       {Row{0.1, 6, 2, 0.85 / 2}, Row{0.1, 6, 0.5, 0.45 + 0.85}, Row{0.001, 6, 1, 0.65}, Row{0.1, 0, 1, 0}}) {
    request = {row.frequency, row.db, row.q};
    ZrIIR_FindBandPassCoeffs(&peak, &request);
    EXPECT_NEAR(peak.fir, row.k * (std::pow(10.0, row.db / 20) - 1), 1e-13);
    EXPECT_NEAR(peak.a2, std::exp(-2 * kPi * row.frequency / row.q), 1e-13);
  }
  request = {0.7, 6, 1};
  ZrIIR_FindBandPassCoeffs(&peak, &request);
  EXPECT_NEAR(peak.a2, std::exp(-2 * kPi * 0.49), 1e-13);
}

}  // namespace
