// SPDX-License-Identifier: Apache-2.0
// Signal-to-noise ratio of a tone by a least-squares fit of sine, cosine and a constant.
#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace testing_support {

/// @param frequency of the tone as a fraction of the sample rate.
/// @return decibels of the fitted tone over what remains.
inline double SineSnr(const std::vector<double>& signal, double frequency) {
  // Normal equations of three unknowns, solved by elimination.
  double matrix[3][4] = {};
  const auto row = [&](size_t n, double basis[3]) {
    const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(n);
    basis[0] = std::sin(angle);
    basis[1] = std::cos(angle);
    basis[2] = 1;
  };
  for (size_t n = 0; n < signal.size(); ++n) {
    double basis[3];
    row(n, basis);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) matrix[i][j] += basis[i] * basis[j];
      matrix[i][3] += basis[i] * signal[n];
    }
  }
  for (int pivot = 0; pivot < 3; ++pivot) {
    for (int other = 0; other < 3; ++other) {
      if (other == pivot) continue;
      const double factor = matrix[other][pivot] / matrix[pivot][pivot];
      for (int column = 0; column < 4; ++column) matrix[other][column] -= factor * matrix[pivot][column];
    }
  }
  const double fit[3] = {matrix[0][3] / matrix[0][0], matrix[1][3] / matrix[1][1], matrix[2][3] / matrix[2][2]};
  double tone = 0;
  double noise = 0;
  for (size_t n = 0; n < signal.size(); ++n) {
    double basis[3];
    row(n, basis);
    const double clean = fit[0] * basis[0] + fit[1] * basis[1];
    tone += clean * clean;
    noise += (signal[n] - clean - fit[2]) * (signal[n] - clean - fit[2]);
  }
  return 10 * std::log10(tone / noise);
}

}  // namespace testing_support
