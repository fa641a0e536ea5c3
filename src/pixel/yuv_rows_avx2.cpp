// SPDX-License-Identifier: Apache-2.0
// Rows of video in bytes to 4-byte pixels and back in AVX2. Rounded products are a single high multiply: with chroma
// doubled, or taken eightfold for 12 fraction bits, it drops 15 bits and rounds as the plain rows do. Sums of whole
// numbers have one value in any order, so that the bits stay the same.

#include <immintrin.h>

#include "pixel/byte_float.h"
#include "pixel/v210.h"
#include "pixel/yuv_rows.h"

#define MARLO_AVX2 __attribute__((target("avx2")))

namespace marlo::pixel {

namespace {

MARLO_AVX2 __m256i Load256(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
MARLO_AVX2 __m128i Load128(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
MARLO_AVX2 __m128i Load64(const void* from) { return _mm_loadl_epi64(static_cast<const __m128i*>(from)); }
MARLO_AVX2 void Store256(void* to, __m256i value) { _mm256_storeu_si256(static_cast<__m256i*>(to), value); }
MARLO_AVX2 void Store128(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

/// Two words that stand side by side in every 32 bits.
MARLO_AVX2 __m256i WordPairs(int32_t low, int32_t high) {
  return _mm256_set1_epi32(
      static_cast<int32_t>(static_cast<uint32_t>(low & 0xFFFF) | static_cast<uint32_t>(high) << 16));
}

/// Decoding of eight pairs at a time.
struct Decoder {
  __m256i blue, red, green, greenHalf, center;
  __m128i greenShift;
  int32_t scaleShift;

  MARLO_AVX2 explicit Decoder(const DecodeMatrix& matrix)
      : blue(_mm256_set1_epi16(static_cast<int16_t>(matrix.uToBlue))),
        red(_mm256_set1_epi16(static_cast<int16_t>(matrix.vToRed))),
        green(WordPairs(matrix.uToGreen, matrix.vToGreen)),
        greenHalf(_mm256_set1_epi32(1 << (matrix.shift - 1))),
        center(_mm256_set1_epi16(128)),
        greenShift(_mm_cvtsi32_si128(matrix.shift)),
        scaleShift(15 - matrix.shift) {}

  /// @param chroma words U V of eight pairs. @param luma words of their sixteen pixels.
  MARLO_AVX2 void Store(uint8_t* pixels, __m256i luma, __m256i chroma) const {
    const __m256i centered = _mm256_sub_epi16(chroma, center);
    const __m256i scaled = _mm256_sll_epi16(centered, _mm_cvtsi32_si128(scaleShift));
    const __m256i blueOfPair = _mm256_mulhrs_epi16(scaled, blue);
    const __m256i redOfPair = _mm256_mulhrs_epi16(scaled, red);
    const __m256i greenOfPair =
        _mm256_sra_epi32(_mm256_add_epi32(_mm256_madd_epi16(centered, green), greenHalf), greenShift);
    // Each tint twice, for both pixels of a pair: U stands in low words, V in high ones.
    const __m256i blueTwice =
        _mm256_or_si256(_mm256_and_si256(blueOfPair, _mm256_set1_epi32(0xFFFF)), _mm256_slli_epi32(blueOfPair, 16));
    const __m256i redTwice = _mm256_blend_epi16(_mm256_srli_epi32(redOfPair, 16), redOfPair, 0xAA);
    const __m256i greenTwice =
        _mm256_or_si256(_mm256_and_si256(greenOfPair, _mm256_set1_epi32(0xFFFF)), _mm256_slli_epi32(greenOfPair, 16));
    const __m256i blues = _mm256_add_epi16(luma, blueTwice);
    const __m256i greens = _mm256_add_epi16(luma, greenTwice);
    const __m256i reds = _mm256_add_epi16(luma, redTwice);
    const __m256i blueRed = _mm256_packus_epi16(blues, reds);
    const __m256i greenAlpha = _mm256_packus_epi16(greens, _mm256_set1_epi16(255));
    const __m256i blueGreen = _mm256_unpacklo_epi8(blueRed, greenAlpha);
    const __m256i redAlpha = _mm256_unpackhi_epi8(blueRed, greenAlpha);
    const __m256i low = _mm256_unpacklo_epi16(blueGreen, redAlpha);
    const __m256i high = _mm256_unpackhi_epi16(blueGreen, redAlpha);
    Store256(pixels, _mm256_permute2x128_si256(low, high, 0x20));
    Store256(pixels + 32, _mm256_permute2x128_si256(low, high, 0x31));
  }
};

constexpr int32_t kDecodePairs = 8;

MARLO_AVX2 void FromUyvy(uint8_t* pixels, const uint8_t* packed, int32_t pairs, const DecodeMatrix& matrix) {
  const Decoder decoder(matrix);
  for (; pairs >= kDecodePairs; pairs -= kDecodePairs, packed += 32, pixels += 64) {
    const __m256i samples = Load256(packed);
    decoder.Store(pixels, _mm256_srli_epi16(samples, 8), _mm256_and_si256(samples, _mm256_set1_epi16(255)));
  }
  kYuvRowsPlain.fromUyvy(pixels, packed, pairs, matrix);
}

MARLO_AVX2 void FromYuyv(uint8_t* pixels, const uint8_t* packed, int32_t pairs, const DecodeMatrix& matrix) {
  const Decoder decoder(matrix);
  for (; pairs >= kDecodePairs; pairs -= kDecodePairs, packed += 32, pixels += 64) {
    const __m256i samples = Load256(packed);
    decoder.Store(pixels, _mm256_and_si256(samples, _mm256_set1_epi16(255)), _mm256_srli_epi16(samples, 8));
  }
  kYuvRowsPlain.fromYuyv(pixels, packed, pairs, matrix);
}

MARLO_AVX2 void FromPlanes(uint8_t* pixels, const uint8_t* luma, const uint8_t* u, const uint8_t* v, int32_t pairs,
                           const DecodeMatrix& matrix) {
  const Decoder decoder(matrix);
  for (; pairs >= kDecodePairs; pairs -= kDecodePairs, luma += 16, u += 8, v += 8, pixels += 64) {
    const __m128i chroma = _mm_unpacklo_epi8(Load64(u), Load64(v));
    decoder.Store(pixels, _mm256_cvtepu8_epi16(Load128(luma)), _mm256_cvtepu8_epi16(chroma));
  }
  kYuvRowsPlain.fromPlanes(pixels, luma, u, v, pairs, matrix);
}

/// Pixels as words: blue and red in one register, green and a word that counts for nothing in the other, so that a
/// dot product of each pixel is two multiplications and no shuffle.
struct Channels {
  __m256i blueRed, green;
  MARLO_AVX2 explicit Channels(__m256i pixels)
      : blueRed(_mm256_and_si256(pixels, _mm256_set1_epi16(255))), green(_mm256_srli_epi16(pixels, 8)) {}
  MARLO_AVX2 Channels(const Channels& one, const Channels& other)
      : blueRed(_mm256_add_epi16(one.blueRed, other.blueRed)), green(_mm256_add_epi16(one.green, other.green)) {}
};

struct Row {
  __m256i blueRed, green;
  MARLO_AVX2 explicit Row(const int16_t (&row)[3]) : blueRed(WordPairs(row[0], row[2])), green(WordPairs(row[1], 0)) {}
  MARLO_AVX2 __m256i Dot(const Channels& channels) const {
    return _mm256_add_epi32(_mm256_madd_epi16(channels.blueRed, blueRed), _mm256_madd_epi16(channels.green, green));
  }
};

/// The left and the right pixels of eight pairs, which stand in the order 0 1 4 5 and 2 3 6 7.
struct Pairs {
  Channels left, right;
  MARLO_AVX2 explicit Pairs(const uint8_t* pixels) : Pairs(Load256(pixels), Load256(pixels + 32)) {}
  MARLO_AVX2 Channels Sum() const { return {left, right}; }

 private:
  MARLO_AVX2 Pairs(__m256i first, __m256i second) : left(Pick<0x88>(first, second)), right(Pick<0xDD>(first, second)) {}
  template <int kLanes>
  MARLO_AVX2 static __m256i Pick(__m256i first, __m256i second) {
    return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(first), _mm256_castsi256_ps(second), kLanes));
  }
};
/// Back to the order of the picture, two pairs' 64 bits at a time.
MARLO_AVX2 __m256i InOrder(__m256i pairs) { return _mm256_permute4x64_epi64(pairs, _MM_SHUFFLE(3, 1, 2, 0)); }

/// Words of both without their 12 fraction bits, side by side; 28 bits hold every sum.
MARLO_AVX2 __m256i WholesBeside(__m256i low, __m256i high) {
  return _mm256_blend_epi16(_mm256_srli_epi32(low, 12), _mm256_slli_epi32(high, 4), 0xAA);
}
/// Words within 1 to 254. Codes reach 256 and fall below 0 before, so bytes wouldn't hold them.
MARLO_AVX2 __m256i ClampedCodes(__m256i words) {
  return _mm256_min_epi16(_mm256_max_epi16(words, _mm256_set1_epi16(1)), _mm256_set1_epi16(254));
}

constexpr int32_t kEncodePairs = 8;

MARLO_AVX2 void ToUyvy(uint8_t* packed, const uint8_t* pixels, int32_t pairs, const PackedEncodeMatrix& matrix) {
  const Row lumaRow(matrix.luma), uRow(matrix.u), vRow(matrix.v);
  const __m256i half = _mm256_set1_epi32(2048);
  const __m256i center = _mm256_set1_epi32((128 << 12) + 2048);
  for (; pairs >= kEncodePairs; pairs -= kEncodePairs, pixels += 64, packed += 32) {
    const Pairs both(pixels);
    const Channels sum = both.Sum();
    const __m256i left = _mm256_add_epi32(lumaRow.Dot(both.left), half);
    const __m256i right = _mm256_add_epi32(lumaRow.Dot(both.right), half);
    const __m256i u = _mm256_add_epi32(uRow.Dot(sum), center);
    const __m256i v = _mm256_add_epi32(vRow.Dot(sum), center);
    const __m256i luma = ClampedCodes(WholesBeside(left, right));
    Store256(packed, InOrder(_mm256_or_si256(ClampedCodes(WholesBeside(u, v)), _mm256_slli_epi16(luma, 8))));
  }
  kYuvRowsPlain.toUyvy(packed, pixels, pairs, matrix);
}

MARLO_AVX2 void CutV210(uint8_t* packed, const uint8_t* words, int32_t pairs) {
  // Eight words are 24 samples; a step of 24 bytes is stored as two overlapping halves of 16.
  constexpr int32_t kStepPairs = 6;
  const __m256i squeeze = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0, 1, 2, 4, 5, 6, 8,
                                           9, 10, 12, 13, 14, -1, -1, -1, -1);
  // The second store runs 4 bytes over; another pair behind takes them.
  for (; pairs > kStepPairs; pairs -= kStepPairs, words += 32, packed += 24) {
    const __m256i samples = Load256(words);
    const __m256i first = _mm256_and_si256(_mm256_srli_epi32(samples, 2), _mm256_set1_epi32(0xFF));
    const __m256i second = _mm256_and_si256(_mm256_srli_epi32(samples, 4), _mm256_set1_epi32(0xFF00));
    const __m256i third = _mm256_and_si256(_mm256_srli_epi32(samples, 6), _mm256_set1_epi32(0xFF0000));
    const __m256i bytes = _mm256_shuffle_epi8(_mm256_or_si256(_mm256_or_si256(first, second), third), squeeze);
    Store128(packed, _mm256_castsi256_si128(bytes));
    Store128(packed + 12, _mm256_extracti128_si256(bytes, 1));
  }
  kYuvRowsPlain.cutV210(packed, words, pairs);
}

/// Cut of ten-thousandths to codes. The half keeps quotients 5e-5 off whole codes, further than the float product
/// errs.
MARLO_AVX2 __m256i WholeCodes(__m256i exact) {
  const __m256 middle = _mm256_add_ps(_mm256_cvtepi32_ps(exact), _mm256_set1_ps(0.5f));
  return _mm256_cvttps_epi32(_mm256_mul_ps(middle, _mm256_set1_ps(1.0f / kDecimalOne)));
}

MARLO_AVX2 void Dither8Luma(uint16_t* codes, const uint8_t* pixels, int32_t count, const DecimalMatrix& matrix,
                            int32_t y) {
  const Row row(matrix.luma);
  const uint8_t(&steps)[4] = kDitherMatrix[y & 3];
  constexpr int32_t kStep = kDecimalOne / 16;
  const __m256i dither = _mm256_setr_epi32(steps[0] * kStep, steps[1] * kStep, steps[2] * kStep, steps[3] * kStep,
                                           steps[0] * kStep, steps[1] * kStep, steps[2] * kStep, steps[3] * kStep);
  int32_t x = 0;
  for (; x + 16 <= count; x += 16, pixels += 64) {
    const __m256i left = WholeCodes(_mm256_add_epi32(row.Dot(Channels(Load256(pixels))), dither));
    const __m256i right = WholeCodes(_mm256_add_epi32(row.Dot(Channels(Load256(pixels + 32))), dither));
    Store256(codes + x, ClampedCodes(InOrder(_mm256_packs_epi32(left, right))));
  }
  kYuvRowsPlain.dither8Luma(codes + x, pixels, count - x, matrix, y);
}

/// Codes of four whole dot products. The products and sums are the plain row's, in double.
MARLO_AVX2 __m128i ChromaCodes(__m128i dots, __m256d gain, __m256d base) {
  const __m256d value = _mm256_add_pd(_mm256_mul_pd(_mm256_cvtepi32_pd(dots), gain), base);
  return _mm256_cvttpd_epi32(_mm256_min_pd(_mm256_max_pd(value, _mm256_set1_pd(1.0)), _mm256_set1_pd(254.0)));
}

MARLO_AVX2 void StoreChroma(uint16_t* to, __m256i dots, __m256d gain, __m256d base) {
  const __m256i ordered = InOrder(dots);
  Store128(to, _mm_packs_epi32(ChromaCodes(_mm256_castsi256_si128(ordered), gain, base),
                               ChromaCodes(_mm256_extracti128_si256(ordered, 1), gain, base)));
}

MARLO_AVX2 void Dither8Chroma(uint16_t* u, uint16_t* v, const uint8_t* first, const uint8_t* second, int32_t pairs,
                              const DecimalMatrix& matrix, int32_t y) {
  const Row uRow(matrix.u), vRow(matrix.v);
  const __m256d gain = _mm256_set1_pd((second ? kByteChromaGain4 : kByteChromaGain2) / kDecimalOne);
  const uint8_t(&steps)[4] = kDitherMatrix[y & 3];
  const __m256d base = _mm256_setr_pd(128.0 + steps[0] / 16.0 + kCodeEpsilon, 128.0 + steps[1] / 16.0 + kCodeEpsilon,
                                      128.0 + steps[2] / 16.0 + kCodeEpsilon, 128.0 + steps[3] / 16.0 + kCodeEpsilon);
  int32_t pair = 0;
  for (; pair + 8 <= pairs; pair += 8) {
    Channels sum = Pairs(first + pair * 8).Sum();
    if (second) sum = Channels(sum, Pairs(second + pair * 8).Sum());
    StoreChroma(u + pair, uRow.Dot(sum), gain, base);
    StoreChroma(v + pair, vRow.Dot(sum), gain, base);
  }
  kYuvRowsPlain.dither8Chroma(u + pair, v + pair, first + pair * 8, second ? second + pair * 8 : nullptr, pairs - pair,
                              matrix, y);
}

}  // namespace

const YuvRows kYuvRowsAvx2 = {FromUyvy, FromYuyv, FromPlanes, ToUyvy, CutV210, Dither8Luma, Dither8Chroma};

}  // namespace marlo::pixel
