// SPDX-License-Identifier: Apache-2.0
// Row kernels of the scalers for 8-bit pixels in AVX2: the same integers, sixteen channels at a time.

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "pixel/scale_rows.h"

#define MARLO_AVX2 __attribute__((target("avx2")))

namespace marlo::pixel {

namespace {

constexpr int32_t kChannels = 4;

MARLO_AVX2 __m256i Load32(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
MARLO_AVX2 __m128i Load16(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
MARLO_AVX2 __m256i Words(const uint8_t* from) { return _mm256_cvtepu8_epi16(Load16(from)); }
MARLO_AVX2 void Store32(void* to, __m256i value) { _mm256_storeu_si256(static_cast<__m256i*>(to), value); }

MARLO_AVX2 __m256i TwoHalves(const void* low, const void* high) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(low)), Load16(high), 1);
}

/// The rounding high multiply gives ((to - from) * 2f + 16384) >> 15, which is the plain member's rounding.
MARLO_AVX2 __m256i Mixed(__m256i from, __m256i to, __m256i doubledFraction) {
  return _mm256_add_epi16(from, _mm256_mulhrs_epi16(_mm256_sub_epi16(to, from), doubledFraction));
}

/// (sum + 8192) / 16384 toward zero in 32-bit lanes.
MARLO_AVX2 __m256i Rounded(__m256i sum) {
  const __m256i biased = _mm256_add_epi32(sum, _mm256_set1_epi32(8192));
  const __m256i fix = _mm256_srli_epi32(_mm256_srai_epi32(biased, 31), 18);
  return _mm256_srai_epi32(_mm256_add_epi32(biased, fix), 14);
}

/// Packs two registers of four pixels' words to 32 bytes in order.
MARLO_AVX2 __m256i PackedBytes(__m256i first, __m256i second) {
  return _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), _MM_SHUFFLE(3, 1, 2, 0));
}

MARLO_AVX2 void VerticalLinear(int16_t* line, const uint8_t* const rows[4], const int16_t weights[4], int32_t pixels) {
  const __m256i fraction = _mm256_set1_epi16(weights[0]);
  int32_t pixel = 0;
  for (; pixel + 4 <= pixels; pixel += 4) {
    Store32(line + pixel * kChannels,
            Mixed(Words(rows[0] + pixel * kChannels), Words(rows[1] + pixel * kChannels), fraction));
  }
  const uint8_t* const rest[4] = {rows[0] + pixel * kChannels, rows[1] + pixel * kChannels, nullptr, nullptr};
  kByteKernelsPlain.verticalLinear(line + pixel * kChannels, rest, weights, pixels - pixel);
}

MARLO_AVX2 __m256i WeightPair(int16_t first, int16_t second) {
  return _mm256_set1_epi32(static_cast<uint16_t>(first) | static_cast<int32_t>(second) << 16);
}

MARLO_AVX2 void VerticalCubic(int16_t* line, const uint8_t* const rows[4], const int16_t weights[4], int32_t pixels) {
  const __m256i weights01 = WeightPair(weights[0], weights[1]);
  const __m256i weights23 = WeightPair(weights[2], weights[3]);
  int32_t pixel = 0;
  for (; pixel + 4 <= pixels; pixel += 4) {
    const int32_t at = pixel * kChannels;
    const __m256i row0 = Words(rows[0] + at);
    const __m256i row1 = Words(rows[1] + at);
    const __m256i row2 = Words(rows[2] + at);
    const __m256i row3 = Words(rows[3] + at);
    const __m256i low = _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(row0, row1), weights01),
                                         _mm256_madd_epi16(_mm256_unpacklo_epi16(row2, row3), weights23));
    const __m256i high = _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(row0, row1), weights01),
                                          _mm256_madd_epi16(_mm256_unpackhi_epi16(row2, row3), weights23));
    Store32(line + at, _mm256_packs_epi32(Rounded(low), Rounded(high)));
  }
  const uint8_t* rest[4];
  for (int tap = 0; tap < 4; ++tap) rest[tap] = rows[tap] + pixel * kChannels;
  kByteKernelsPlain.verticalCubic(line + pixel * kChannels, rest, weights, pixels - pixel);
}

/// Words of the rows between a box's first and last, for eight pixels; at most 257 rows fit a word.
struct BetweenSums {
  __m256i low, high;
};

MARLO_AVX2 BetweenSums SumBetween(const BoxRows& rows, int32_t at, int32_t firstRow, int32_t endRow) {
  const __m256i zero = _mm256_setzero_si256();
  BetweenSums sums = {zero, zero};
  for (int32_t row = firstRow; row < endRow; ++row) {
    const __m256i bytes = Load32(rows.first + row * rows.stride + at);
    sums.low = _mm256_add_epi16(sums.low, _mm256_unpacklo_epi8(bytes, zero));
    sums.high = _mm256_add_epi16(sums.high, _mm256_unpackhi_epi8(bytes, zero));
  }
  return sums;
}

constexpr int32_t kMostRowsInWords = 257;

/// A box of rows whose sums fit words and whose weights fit madd.
bool IsLowBox(const BoxRows& rows) {
  return rows.count - 2 <= kMostRowsInWords && rows.lastWeight <= INT16_MAX && rows.firstWeight <= INT16_MAX;
}

/// The weighted sum of a box's rows for eight channels: words of first, last and between, by halves of unpack.
MARLO_AVX2 __m256i BoxSum(__m256i firstAndLast, __m256i weights, __m256i between32) {
  return _mm256_add_epi32(_mm256_madd_epi16(firstAndLast, weights), _mm256_slli_epi32(between32, 14));
}

/// Whole quotients of unsigned sums: half a unit more keeps the product off the integers, so that the
/// reciprocal's error can't change one.
MARLO_AVX2 __m128i Quotient4(__m128i sums, __m256d reciprocal) {
  const __m256d bias = _mm256_set1_pd(2147483648.5);
  const __m128i flipped = _mm_xor_si128(sums, _mm_set1_epi32(INT32_MIN));
  return _mm256_cvttpd_epi32(_mm256_mul_pd(_mm256_add_pd(_mm256_cvtepi32_pd(flipped), bias), reciprocal));
}

MARLO_AVX2 __m256i Quotient8(__m256i sums, __m256d reciprocal) {
  const __m128i low = Quotient4(_mm256_castsi256_si128(sums), reciprocal);
  const __m128i high = Quotient4(_mm256_extracti128_si256(sums, 1), reciprocal);
  return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

MARLO_AVX2 void VerticalBox(int16_t* line, const BoxRows& rows, int32_t length, int32_t pixels) {
  int32_t pixel = 0;
  // A sum has at most 255 lengths.
  if (IsLowBox(rows) && length < INT32_MAX / 128) {
    const __m256d reciprocal = _mm256_set1_pd(1.0 / length);
    const __m256i zero = _mm256_setzero_si256();
    const __m256i weights = WeightPair(static_cast<int16_t>(rows.firstWeight), static_cast<int16_t>(rows.lastWeight));
    for (; pixel + 8 <= pixels; pixel += 8) {
      const int32_t at = pixel * kChannels;
      const BetweenSums between = SumBetween(rows, at, 1, rows.count - 1);
      const __m256i first = Load32(rows.first + at);
      const __m256i last = Load32(rows.Last() + at);
      // Unpacking works within 128-bit halves: pixels 0,1 and 4,5 come low, 2,3 and 6,7 high.
      const __m256i mixLow = _mm256_unpacklo_epi8(first, last);
      const __m256i mixHigh = _mm256_unpackhi_epi8(first, last);
      const __m256i sum0 =
          BoxSum(_mm256_unpacklo_epi8(mixLow, zero), weights, _mm256_unpacklo_epi16(between.low, zero));
      const __m256i sum1 =
          BoxSum(_mm256_unpackhi_epi8(mixLow, zero), weights, _mm256_unpackhi_epi16(between.low, zero));
      const __m256i sum2 =
          BoxSum(_mm256_unpacklo_epi8(mixHigh, zero), weights, _mm256_unpacklo_epi16(between.high, zero));
      const __m256i sum3 =
          BoxSum(_mm256_unpackhi_epi8(mixHigh, zero), weights, _mm256_unpackhi_epi16(between.high, zero));
      const __m256i low = _mm256_packs_epi32(Quotient8(sum0, reciprocal), Quotient8(sum1, reciprocal));
      const __m256i high = _mm256_packs_epi32(Quotient8(sum2, reciprocal), Quotient8(sum3, reciprocal));
      Store32(line + at, _mm256_permute2x128_si256(low, high, 0x20));
      Store32(line + at + 16, _mm256_permute2x128_si256(low, high, 0x31));
    }
  }
  BoxRows rest = rows;
  rest.first += pixel * kChannels;
  kByteKernelsPlain.verticalBox(line + pixel * kChannels, rest, length, pixels - pixel);
}

MARLO_AVX2 __m256i HorizontalLinear4(const int16_t* line, const int32_t* first, const int16_t (*weights)[4]) {
  const __m256i pairs02 = TwoHalves(line + first[0] * kChannels, line + first[2] * kChannels);
  const __m256i pairs13 = TwoHalves(line + first[1] * kChannels, line + first[3] * kChannels);
  const __m256i from = _mm256_unpacklo_epi64(pairs02, pairs13);
  const __m256i to = _mm256_unpackhi_epi64(pairs02, pairs13);
  return Mixed(from, to, Load32(weights));
}

MARLO_AVX2 void HorizontalLinear(uint8_t* out, const int16_t* line, const TapTable& taps, int32_t count) {
  int32_t pixel = 0;
  for (; pixel + 8 <= count; pixel += 8) {
    const __m256i first = HorizontalLinear4(line, taps.first + pixel, taps.weights14 + pixel);
    const __m256i second = HorizontalLinear4(line, taps.first + pixel + 4, taps.weights14 + pixel + 4);
    Store32(out + pixel * kChannels, PackedBytes(first, second));
  }
  const TapTable rest = {taps.first + pixel, taps.weights14 + pixel, nullptr};
  kByteKernelsPlain.horizontalLinear(out + pixel * kChannels, line, rest, count - pixel);
}

/// The four channels' sums of one pixel, not yet rounded, taps 0 and 1 in the low half, 2 and 3 in the high.
MARLO_AVX2 __m256i CubicHalves(const int16_t* line, int32_t first, const int16_t* weights) {
  const __m256i pairChannels = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15,  //
                                                0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  const __m256i spread = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
  const __m256i taps = _mm256_shuffle_epi8(Load32(line + first * kChannels), pairChannels);
  const __m128i four = _mm_loadl_epi64(static_cast<const __m128i*>(static_cast<const void*>(weights)));
  return _mm256_madd_epi16(taps, _mm256_permutevar8x32_epi32(_mm256_castsi128_si256(four), spread));
}

MARLO_AVX2 __m256i HorizontalCubic2(const int16_t* line, const int32_t* first, const int16_t (*weights)[4]) {
  const __m256i a = CubicHalves(line, first[0], weights[0]);
  const __m256i b = CubicHalves(line, first[1], weights[1]);
  const __m256i sum = _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20), _mm256_permute2x128_si256(a, b, 0x31));
  // Below zero the packing clamps, so the direction of rounding there doesn't matter.
  return _mm256_srai_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(8192)), 14);
}

MARLO_AVX2 void HorizontalCubic(uint8_t* out, const int16_t* line, const TapTable& taps, int32_t count) {
  int32_t pixel = 0;
  for (; pixel + 4 <= count; pixel += 4) {
    const __m256i first = HorizontalCubic2(line, taps.first + pixel, taps.weights14 + pixel);
    const __m256i second = HorizontalCubic2(line, taps.first + pixel + 2, taps.weights14 + pixel + 2);
    // Words: pixels 0 and 2 in the low half, 1 and 3 in the high.
    const __m256i words = _mm256_packs_epi32(first, second);
    const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
    _mm_storeu_si128(static_cast<__m128i*>(static_cast<void*>(out + pixel * kChannels)),
                     _mm_shuffle_epi32(bytes, _MM_SHUFFLE(3, 1, 2, 0)));
  }
  const TapTable rest = {taps.first + pixel, taps.weights14 + pixel, nullptr};
  kByteKernelsPlain.horizontalCubic(out + pixel * kChannels, line, rest, count - pixel);
}

MARLO_AVX2 __m128i PixelWords32(const uint8_t* pixel) {
  int32_t bytes;
  std::memcpy(&bytes, pixel, sizeof bytes);
  return _mm_cvtepu8_epi32(_mm_cvtsi32_si128(bytes));
}

/// Columns of a tile: its lines stay in the first-level cache.
constexpr int32_t kTileColumns = 512;
constexpr int32_t kTilePixels = 256;
/// Up to this many rows between the first and the last, their sum is a signed word.
constexpr int32_t kMostRowsInSignedWords = 128;

/// What boxBoth keeps of the columns of a tile: the rows between beside the first row as word pairs, for the boxes'
/// edges; and the column's whole weighted sum, for what lies between the edges.
struct BoxTile {
  alignas(32) int16_t pairs[kTileColumns * kChannels * 2];
  alignas(32) uint32_t columns[kTileColumns * kChannels];
};

/// The next tile's piece of a row: short pieces of many rows are more than the processor foresees.
void PrefetchNextTile(const uint8_t* piece) {
  _mm_prefetch(static_cast<const char*>(static_cast<const void*>(piece + kTileColumns * kChannels)), _MM_HINT_T0);
}

/// Four columns of a tile from the words of the rows between.
MARLO_AVX2 void FillFour(BoxTile* tile, const BoxRows& rows, int32_t at, __m256i between, __m256i weights) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i first = Words(rows.first + at);
  const __m256i last = Words(rows.Last() + at);
  // Unpacking works within halves: pixels 0 and 2 come low, 1 and 3 high.
  const __m256i pairsLow = _mm256_unpacklo_epi16(between, first);
  const __m256i pairsHigh = _mm256_unpackhi_epi16(between, first);
  const __m256i low = BoxSum(_mm256_unpacklo_epi16(first, last), weights, _mm256_unpacklo_epi16(between, zero));
  const __m256i high = BoxSum(_mm256_unpackhi_epi16(first, last), weights, _mm256_unpackhi_epi16(between, zero));
  Store32(tile->pairs + at * 2, _mm256_permute2x128_si256(pairsLow, pairsHigh, 0x20));
  Store32(tile->pairs + at * 2 + 16, _mm256_permute2x128_si256(pairsLow, pairsHigh, 0x31));
  Store32(tile->columns + at, _mm256_permute2x128_si256(low, high, 0x20));
  Store32(tile->columns + at + 8, _mm256_permute2x128_si256(low, high, 0x31));
}

MARLO_AVX2 void FillTile(BoxTile* tile, const BoxRows& rows, int32_t columns) {
  constexpr int32_t kGroups = 4;
  const __m256i weights = WeightPair(static_cast<int16_t>(rows.firstWeight), static_cast<int16_t>(rows.lastWeight));
  int32_t column = 0;
  for (; column + 4 * kGroups <= columns; column += 4 * kGroups) {
    const int32_t at = column * kChannels;
    PrefetchNextTile(rows.Last() + at);
    __m256i between[kGroups] = {};
    for (int32_t row = 1; row < rows.count - 1; ++row) {
      const uint8_t* const from = rows.first + row * rows.stride + at;
      PrefetchNextTile(from);
      for (int32_t group = 0; group < kGroups; ++group) {
        between[group] = _mm256_add_epi16(between[group], Words(from + group * 16));
      }
    }
    for (int32_t group = 0; group < kGroups; ++group) FillFour(tile, rows, at + group * 16, between[group], weights);
  }
  const uint8_t* const last = rows.Last();
  for (int32_t index = column * kChannels; index < columns * kChannels; ++index) {
    int32_t between = 0;
    for (int32_t row = 1; row < rows.count - 1; ++row) between += rows.first[row * rows.stride + index];
    tile->pairs[index * 2] = static_cast<int16_t>(between);
    tile->pairs[index * 2 + 1] = rows.first[index];
    tile->columns[index] = static_cast<uint32_t>((between << 14) + rows.first[index] * rows.firstWeight) +
                           static_cast<uint32_t>(last[index] * rows.lastWeight);
  }
}

/// Weights of the boxes' edge columns for one row of boxes: the column's own beside the top corner's, and the
/// bottom corner's.
struct EdgeWeights {
  int32_t middleAndTop[kTilePixels];
  int32_t bottom[kTilePixels];
  void Set(int32_t pixel, int32_t weight, const BoxRows& rows) {
    middleAndTop[pixel] = weight | (weight * rows.firstWeight >> kFractionBits) << 16;
    bottom[pixel] = weight * rows.lastWeight >> kFractionBits;
  }
};

/// One word to all lanes, straight from memory.
MARLO_AVX2 __m128i Spread(const int32_t* word) {
  return _mm_castps_si128(_mm_broadcast_ss(static_cast<const float*>(static_cast<const void*>(word))));
}

/// One edge column's part of a box.
MARLO_AVX2 __m128i EdgeSum(const int16_t* pairs, const uint8_t* lastRow, const EdgeWeights& weights, int32_t pixel) {
  return _mm_add_epi32(_mm_madd_epi16(Load16(pairs), Spread(weights.middleAndTop + pixel)),
                       _mm_madd_epi16(PixelWords32(lastRow), Spread(weights.bottom + pixel)));
}

/// Rows whose weights and sums fit words.
bool FitsTile(const BoxRows& rows) {
  return rows.count - 2 <= kMostRowsInSignedWords && rows.firstWeight <= kOne && rows.lastWeight <= kOne;
}

MARLO_AVX2 void BoxTileRow(uint8_t* out, const BoxTile& tile, const BoxRows& rows, const Box* boxes, int32_t count,
                           __m256d reciprocal) {
  EdgeWeights first, last;
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    first.Set(pixel, boxes[pixel].firstWeight, rows);
    last.Set(pixel, boxes[pixel].lastWeight, rows);
  }
  const int32_t origin = boxes[0].first;
  const uint8_t* const lastRow = rows.Last();
  const auto sumOf = [&](int32_t pixel) MARLO_AVX2 {
    const int32_t left = (boxes[pixel].first - origin) * kChannels;
    const int32_t right = (boxes[pixel].last - origin) * kChannels;
    __m128i sum = _mm_add_epi32(EdgeSum(tile.pairs + left * 2, lastRow + left, first, pixel),
                                EdgeSum(tile.pairs + right * 2, lastRow + right, last, pixel));
    for (int32_t at = left + kChannels; at < right; at += kChannels) {
      sum = _mm_add_epi32(sum, Load16(tile.columns + at));
    }
    return Quotient4(sum, reciprocal);
  };
  int32_t pixel = 0;
  for (; pixel + 2 <= count; pixel += 2) {
    const __m128i words = _mm_packs_epi32(sumOf(pixel), sumOf(pixel + 1));
    _mm_storel_epi64(static_cast<__m128i*>(static_cast<void*>(out + pixel * kChannels)),
                     _mm_packus_epi16(words, words));
  }
  if (pixel < count) {
    const __m128i words = _mm_packs_epi32(sumOf(pixel), _mm_setzero_si128());
    const int32_t bytes = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    std::memcpy(out + pixel * kChannels, &bytes, sizeof bytes);
  }
}

/// The end of the boxes from `start` that fill one tile; `start` itself for a box that fits none.
int32_t TileEnd(const Box* boxes, int32_t start, int32_t count) {
  const int32_t firstColumn = boxes[start].first;
  // Boxes only move on, and once the edge folds pixels together it does so to the end.
  const Box* const end = std::partition_point(
      boxes + start, boxes + std::min(count, start + kTilePixels),
      [=](const Box& box) { return box.last - firstColumn < kTileColumns && box.lastWeight <= kOne; });
  return static_cast<int32_t>(end - boxes);
}

MARLO_AVX2 void BoxBoth(uint8_t* out, uint32_t* sums, const BoxRows& rows, const Box* boxes, int64_t area,
                        int32_t count, int32_t pixels) {
  if (!FitsTile(rows)) {
    kByteKernelsPlain.boxBoth(out, sums, rows, boxes, area, count, pixels);
    return;
  }
  const __m256d reciprocal = _mm256_set1_pd(1.0 / static_cast<double>(area));
  BoxTile tile;
  for (int32_t start = 0; start < count;) {
    const int32_t end = TileEnd(boxes, start, count);
    BoxRows columns = rows;
    columns.first += int64_t{boxes[start].first} * kChannels;
    if (end > start) {
      FillTile(&tile, columns, boxes[end - 1].last - boxes[start].first + 1);
      BoxTileRow(out + int64_t{start} * kChannels, tile, columns, boxes + start, end - start, reciprocal);
      start = end;
    } else {
      // A box at the source's edge that folds several pixels into one, or one wider than a tile.
      Box box = boxes[start];
      box.last -= box.first;
      box.first = 0;
      kByteKernelsPlain.boxBoth(out + int64_t{start} * kChannels, sums, columns, &box, area, 1, box.last + 1);
      ++start;
    }
  }
}

void HorizontalBox(uint8_t* out, const int16_t* line, const Box* boxes, int32_t length, int32_t count) {
  kByteKernelsPlain.horizontalBox(out, line, boxes, length, count);
}

void BoxBothWide(uint8_t* out, uint32_t* sums, const BoxRows& rows, const Box* boxes, int64_t area, int32_t count,
                 int32_t pixels) {
  kByteKernelsPlain.boxBothWide(out, sums, rows, boxes, area, count, pixels);
}

}  // namespace

const ByteRowKernels kByteKernelsAvx2 = {
    VerticalLinear, VerticalCubic, VerticalBox, HorizontalLinear, HorizontalCubic, HorizontalBox, BoxBoth, BoxBothWide,
};

}  // namespace marlo::pixel
