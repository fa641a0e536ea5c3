// SPDX-License-Identifier: Apache-2.0
// Coefficient finders of real-time shelves and peaks.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "marlo110k/iir.h"

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kLowestFrequency = 0.0003;
constexpr double kHighestFrequency = 0.49;
/// From this cut on a shelf removes its band altogether.
constexpr double kFullCutDb = -25;

double FromDb(double db, double perDecade) { return std::pow(10.0, db / perDecade); }

/// The resonant pair all finders share. @return the frequency used.
template <typename Coefficients>
double FillCore(Coefficients& coefficients, double frequency, double q) {
  const double f = std::clamp(frequency, kLowestFrequency, kHighestFrequency);
  coefficients.zero[0] = coefficients.zero[1] = 0;
  coefficients.a1 = 2 * std::exp(-kPi * f / q) * std::cos(2 * kPi * f);
  coefficients.a2 = std::exp(-2 * kPi * f / q);
  coefficients.scale = 1 - coefficients.a1 + coefficients.a2;
  coefficients.fir = 0;
  return f;
}

/// Feed-forward of the high shelves in dB, in steps of 1000 / 44100; the last value holds beyond the table.
double HighShelfFir(double frequency) {
  constexpr double kDb[16] = {0, -1, -2, -3, -4, -5, -5, -6, -7, -8, -9, -10, -11, -12, -12, -13};
  const double place = std::clamp(frequency * 44100 / 1000, 0.0, 15.0);
  const int step = std::min(static_cast<int>(place), 14);
  const double db = kDb[step] + (kDb[step + 1] - kDb[step]) * (place - step);
  return FromDb(db, 20);
}

}  // namespace

void ZrIIR_FindLowShelfCutCoeffs(tZRIIR_SHELF_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept {
  if (coefficients == nullptr || request == nullptr) return;
  const double f = request->frequency;
  FillCore(*coefficients, f < 500.0 / 44100 ? f / 2.2 : f / 3.3, request->q);
  coefficients->dry = request->gainDb <= kFullCutDb ? 0 : FromDb(request->gainDb, 40);
  coefficients->wet = 1 - coefficients->dry;
}

void ZrIIR_FindLowShelfBoostCoeffs(tZRIIR_SHELF_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept {
  if (coefficients == nullptr || request == nullptr) return;
  FillCore(*coefficients, request->frequency / 1.5, request->q);
  coefficients->dry = 1;
  coefficients->wet = FromDb(request->gainDb, 40) - 1;
}

void ZrIIR_FindHiShelfCutCoeffs(tZRIIR_SHELF_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept {
  if (coefficients == nullptr || request == nullptr) return;
  const double f = std::clamp(request->frequency, 0.0004, kHighestFrequency);
  const double moved = f < 0.125 ? f * 0.4 : f * ((f - 0.125) * 1.6 + 0.4);
  FillCore(*coefficients, moved, request->q);
  coefficients->fir = HighShelfFir(moved);
  coefficients->dry = 1;
  coefficients->wet = request->gainDb <= kFullCutDb ? -1 : FromDb(request->gainDb, 40) - 1;
}

void ZrIIR_FindHiShelfBoostCoeffs(tZRIIR_SHELF_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept {
  if (coefficients == nullptr || request == nullptr) return;
  const double f = FillCore(*coefficients, request->frequency, request->q);
  coefficients->scale = 1;
  coefficients->fir = HighShelfFir(f);
  coefficients->dry = 1;
  coefficients->wet = FromDb(request->gainDb, 40) - 1;
}

void ZrIIR_FindBandPassCoeffs(tZRIIR_BANDPASS_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept {
  if (coefficients == nullptr || request == nullptr) return;
  const double q = request->q;
  const double f = FillCore(*coefficients, request->frequency, q);
  coefficients->scale = std::sqrt(coefficients->scale) * std::cos(kPi * f);
  if (request->gainDb == 0) return;
  const double atUnitQ = f > 0.001814 ? 0.85 : 0.65;
  const double k = q < 1 ? (1 - q) * 0.9 + atUnitQ : atUnitQ / q;
  coefficients->fir = k * (FromDb(request->gainDb, 20) - 1);
}
