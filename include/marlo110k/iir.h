// SPDX-License-Identifier: Apache-2.0
// Recursive filters: design from an analogue prototype, running over interleaved audio, and the small
// coefficient finders of real-time gain controls.
//
// Frequencies are fractions of the sample rate. An object belongs to one thread at a time. To replace a
// running filter, design a second one, take the delays over with SetDelayElementsFrom, and swap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"

/// What a filter lets through.
enum ZRIIR_TYPE : uint32_t {
  ZRIIR_LOWPASS = 0,
  ZRIIR_HIGHPASS = 1,
  ZRIIR_BANDSTOP = 2,
  ZRIIR_BANDPASS = 3,
};

/// The family of curves that a filter is designed from.
enum ZRIIR_DESIGN : uint32_t {
  ZRIIR_BUTTERWORTH = 0,
  ZRIIR_CHEBYSHEV = 1,  ///< 0.5 dB of ripple.
  ZRIIR_BESSEL = 2,     ///< Orders 1 to 10.
  ZRIIR_RESONATOR = 3,  ///< One pole pair; types band-stop (a notch) and band-pass (a peak) only.
};

/// Flag of CZrIIR::Design: stay on the scalar code.
inline constexpr uint32_t ZRIIR_NO_SSE2 = 1;

inline constexpr uint32_t kZrIirMaxRoots = 31;
inline constexpr uint32_t kZrIirMaxBiquads = 15;

/// A pole or a zero.
struct tZRIIR_COMPLEX {
  double re;
  double im;
};

/// The roots of a design.
struct tZRIIR_POLYNOMIAL {
  uint32_t numPoles;
  uint32_t numZeros;
  tZRIIR_COMPLEX poles[kZrIirMaxRoots];
  tZRIIR_COMPLEX zeros[kZrIirMaxRoots];
};
static_assert(sizeof(tZRIIR_POLYNOMIAL) == 8 + 2 * 31 * 16);

/// One second-order section: y = b0 w + b1 d1 + b2 d2 with w = x + a1 d1 + a2 d2 (a1 and a2 are added).
struct tZRIIR_BIQUAD {
  double b0;
  double b1;
  double b2;
  double a1;
  double a2;
  double d1[2];  ///< First delay of channels 0 and 1.
  double d2[2];  ///< Second delay of channels 0 and 1.
};
static_assert(sizeof(tZRIIR_BIQUAD) == 72 && offsetof(tZRIIR_BIQUAD, d1) == 40);

/// A cascade of biquads in double precision.
class ZR_API CZrIIR {
 public:
  /// Empty: no sections, gain 0.
  CZrIIR() noexcept;
  /// A copy with the delay state; null makes an empty filter.
  explicit CZrIIR(const CZrIIR* other) noexcept;

  /// Designs a filter. The former design and all delays are cleared first, also when the call fails.
  /// @param type ZRIIR_TYPE. @param design ZRIIR_DESIGN.
  /// @param order 1 to 15 (Bessel 1 to 10); unused by the resonator.
  /// @param f1 corner, or centre of the band types, at most 0.5.
  /// @param f2 width of the band types in octaves; Q of the resonator; otherwise unused.
  /// @param gainDb 0 gives the filter itself. Otherwise the filtered signal is added to the dry one so that the
  /// pass band changes by this gain; a band-stop then becomes a band-pass of the negated gain, which cuts by it
  /// at the centre.
  /// @param channels samples from one frame to the next; channels 0 and 1 are filtered.
  /// @param flags ZRIIR_NO_SSE2 or 0.
  /// @return S_OK; E_INVALIDARG for an f1 above 0.5, a bad order, type or design, or arguments that are no
  /// numbers; E_FAIL when the resonator's peak can't be placed.
  HRESULT Design(uint32_t type, uint32_t design, uint32_t order, double f1, double f2, double gainDb, uint32_t channels,
                 uint32_t flags) noexcept;

  /// Filters `frames` frames; destination may equal source. A channel outside the mask isn't written.
  /// @param channelMask bit 0 for channel 0, bit 1 for channel 1; 0 means both. A channel that enters the mask
  /// starts with cleared delays.
  void ProcessFloat(float* destination, const float* source, uint32_t frames, uint32_t channelMask) noexcept;
  /// As ProcessFloat, on doubles.
  void ProcessDouble(double* destination, const double* source, uint32_t frames, uint32_t channelMask) noexcept;

  /// Clears the delays of the channels in the mask.
  void Reset(uint32_t channelMask) noexcept;
  /// Clears the delays of both channels.
  void ResetAll() noexcept;
  /// Takes over the delays of each section that exists in `other`; null does nothing.
  void SetDelayElementsFrom(const CZrIIR* other) noexcept;

  /// Samples from one frame to the next, as Design was told.
  uint32_t getChannels() const noexcept { return channels_; }
  /// Sections of the cascade.
  uint32_t getNumBiquads() const noexcept { return numBiquads_; }
  /// The mask of the last run, 3 after a design.
  uint32_t getLastChannelMask() const noexcept { return lastChannelMask_; }
  /// The factor on what goes into the first section.
  double getGain() const noexcept { return gain_; }
  /// The factor on the input that is added to the result.
  double getDry() const noexcept { return dry_; }
  /// 0: the roots in the s plane (none for a resonator); 1: in the z plane. Null past 1.
  const tZRIIR_POLYNOMIAL* getPolynomial(uint32_t index) const noexcept;
  /// Null past the last section.
  const tZRIIR_BIQUAD* getBiquad(uint32_t index) const noexcept;

 private:
  HRESULT DesignResonator(uint32_t type, double f1, double q) noexcept;
  HRESULT DesignPrototype(uint32_t type, uint32_t design, uint32_t order, double lower, double upper) noexcept;
  void Normalize(uint32_t type, double lower, double upper, double gainDb) noexcept;
  friend struct ZrIirRunner;

  uint32_t channels_;
  uint32_t lastChannelMask_;
  tZRIIR_POLYNOMIAL polynomials_[2];
  uint32_t numBiquads_;
  tZRIIR_BIQUAD biquads_[kZrIirMaxBiquads];
  double gain_;
  double dry_;
  uint32_t useSse2_;
};

/// What a finder is asked for.
struct tZRIIR_FIND_COEFFS {
  double frequency;  ///< Fraction of the sample rate.
  double gainDb;
  double q;
};
static_assert(sizeof(tZRIIR_FIND_COEFFS) == 24);

/// Coefficients of a shelf: a resonant pair with a feed-forward and a dry/wet mix.
struct tZRIIR_SHELF_COEFFS {
  double zero[2];
  double a1;
  double a2;
  double scale;
  double fir;
  double dry;
  double wet;
};
static_assert(sizeof(tZRIIR_SHELF_COEFFS) == 64);

/// Coefficients of a peak; `fir` is its gain.
struct tZRIIR_BANDPASS_COEFFS {
  double zero[2];
  double a1;
  double a2;
  double scale;
  double fir;
};
static_assert(sizeof(tZRIIR_BANDPASS_COEFFS) == 48);

// Each finder fills every field. Null pointers do nothing. [any thread]

/// A shelf that lowers what lies below the frequency.
ZR_API void ZrIIR_FindLowShelfCutCoeffs(tZRIIR_SHELF_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept;
/// A shelf that raises what lies below the frequency.
ZR_API void ZrIIR_FindLowShelfBoostCoeffs(tZRIIR_SHELF_COEFFS* coefficients,
                                          const tZRIIR_FIND_COEFFS* request) noexcept;
/// A shelf that lowers what lies above the frequency.
ZR_API void ZrIIR_FindHiShelfCutCoeffs(tZRIIR_SHELF_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept;
/// A shelf that raises what lies above the frequency.
ZR_API void ZrIIR_FindHiShelfBoostCoeffs(tZRIIR_SHELF_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept;
/// The frequency is held to 0.0003 .. 0.49; a gain of 0 dB gives a `fir` of 0.
ZR_API void ZrIIR_FindBandPassCoeffs(tZRIIR_BANDPASS_COEFFS* coefficients, const tZRIIR_FIND_COEFFS* request) noexcept;
