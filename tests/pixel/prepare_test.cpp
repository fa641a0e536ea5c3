// SPDX-License-Identifier: Apache-2.0
// Clipping and the kernel records, against the rules worked out step by step.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "marlo110k/dib.h"
#include "pixel/testing/picture.h"

namespace {

using testing_support::Random;

BITMAPINFOHEADER Header(int32_t type, int32_t width, int32_t height) {
  struct {
    BITMAPINFOHEADER header;
    uint8_t room[1024];
  } roomy = {};
  ZrVideo_InitBitmapInfo(&roomy.header, type, width, height, nullptr, 0, nullptr);
  return roomy.header;
}

RECT RandomRect(Random& random, int32_t reach) {
  RECT rect;
  rect.left = static_cast<int32_t>(random.Between(-reach, reach));
  rect.top = static_cast<int32_t>(random.Between(-reach, reach));
  rect.right = static_cast<int32_t>(random.Between(rect.left - reach / 8, rect.left + reach));
  rect.bottom = static_cast<int32_t>(random.Between(rect.top - reach / 8, rect.top + reach));
  return rect;
}

bool Same(const RECT& a, const RECT& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

std::string Text(const RECT& r) {
  return std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
         std::to_string(r.bottom);
}

// ---- Whole pixels ----------------------------------------------------------------------------------

void ReferenceClip(const RECT& bounds, RECT* rect, RECT* other) {
  const bool inside = rect->left >= bounds.left && rect->right <= bounds.right && rect->top >= bounds.top &&
                      rect->bottom <= bounds.bottom;
  if (inside) return;
  const bool overlap = std::max(rect->left, bounds.left) < std::min(rect->right, bounds.right) &&
                       std::max(rect->top, bounds.top) < std::min(rect->bottom, bounds.bottom);
  if (!overlap) {
    *rect = *other = RECT{0, 0, 0, 0};
    return;
  }
  const int32_t cutL = std::max(bounds.left - rect->left, 0), cutR = std::max(rect->right - bounds.right, 0);
  const int32_t cutT = std::max(bounds.top - rect->top, 0), cutB = std::max(rect->bottom - bounds.bottom, 0);
  const int32_t otherWidth = other->right - other->left, otherHeight = other->bottom - other->top;
  const int32_t width = bounds.right - bounds.left, height = bounds.bottom - bounds.top;
  if (width > 0) {
    other->left += otherWidth * cutL / width;
    other->right -= otherWidth * cutR / width;
    rect->left += cutL;
    rect->right -= cutR;
  }
  if (height != 0) {
    other->top += otherHeight * cutT / height;
    other->bottom -= otherHeight * cutB / height;
    rect->top += cutT;
    rect->bottom -= cutB;
  }
}

TEST(PrepareRects, EqualsTheClippingRule) {
  Random random(6102);
  SCOPED_TRACE(random.Label());
  for (int trial = 0; trial < 20000; ++trial) {
    const BITMAPINFOHEADER dst = Header(29, static_cast<int32_t>(random.Between(1, 40)), 1 + trial % 23);
    const BITMAPINFOHEADER src = Header(29, static_cast<int32_t>(random.Between(1, 40)), 1 + trial % 31);
    const RECT dstRect = RandomRect(random, 50), srcRect = RandomRect(random, 50);
    const RECT* dstGiven = random.Between(0, 3) ? &dstRect : nullptr;
    const RECT* srcGiven = random.Between(0, 3) ? &srcRect : nullptr;
    const RECT dstBounds = {0, 0, dst.biWidth, dst.biHeight}, srcBounds = {0, 0, src.biWidth, src.biHeight};

    RECT wantDst = dstGiven ? dstRect : dstBounds, wantSrc = srcGiven ? srcRect : srcBounds;
    const RECT kept = wantSrc;
    ReferenceClip(srcBounds, &wantSrc, &wantDst);
    ReferenceClip(dstBounds, &wantDst, &wantSrc);
    if (!srcGiven) wantSrc = srcBounds;
    if (!dstGiven) wantDst = dstBounds;

    RECT gotDst, gotSrc;
    int32_t insets[4];
    ZrDibPrepareRects(&dst, &gotDst, dstGiven, &src, &gotSrc, srcGiven, insets);
    ASSERT_TRUE(Same(wantDst, gotDst)) << trial << ": " << Text(wantDst) << " / " << Text(gotDst);
    ASSERT_TRUE(Same(wantSrc, gotSrc)) << trial << ": " << Text(wantSrc) << " / " << Text(gotSrc);
    ASSERT_THAT(insets, ::testing::ElementsAre(wantSrc.left - kept.left, wantSrc.top - kept.top,
                                               kept.right - wantSrc.right, kept.bottom - wantSrc.bottom));
  }
}

TEST(PrepareRects, OverhangAtScaleOneBecomesAScaledCopy) {
  // Ten wide, hanging five over the left edge of eight: the source loses 10 * 5 / 8 = 6 columns, not five.
  const BITMAPINFOHEADER dst = Header(29, 8, 8), src = Header(29, 20, 8);
  const RECT dstRect = {-5, 0, 5, 8}, srcRect = {0, 0, 10, 8};
  RECT gotDst, gotSrc;
  ZrDibPrepareRects(&dst, &gotDst, &dstRect, &src, &gotSrc, &srcRect, nullptr);
  EXPECT_EQ("0,0,5,8", Text(gotDst));
  EXPECT_EQ("6,0,10,8", Text(gotSrc));
  // The widest coordinates end in nothing visible, without overflow.
  const RECT wild = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  ZrDibPrepareRects(&dst, &gotDst, &wild, &src, &gotSrc, &wild, nullptr);
  tZRDIBGENERICPARAMS record;
  uint8_t pixels[1024];
  EXPECT_EQ(0, DibPrepareGenericParam(&record, &dst, 0, pixels, &wild, 0, &src, 0, pixels, &wild, 0, 0));
}

RECT ReferenceIntersection(const RECT& a, const RECT& b) {
  const RECT common = {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                       std::min(a.bottom, b.bottom)};
  const bool valid = a.left < a.right && a.top < a.bottom && common.left < common.right && common.top < common.bottom;
  return valid ? common : RECT{0, 0, 0, 0};
}

TEST(PrepareCopy, EqualsTheAlignmentRule) {
  Random random(6103);
  SCOPED_TRACE(random.Label());
  uint8_t dstBits[1], srcBits[1];
  int refused = 0, empty = 0, worked = 0;
  for (int trial = 0; trial < 20000; ++trial) {
    const RECT dstBounds = {0, 0, 1 + trial % 17, 1 + trial % 29}, srcBounds = {0, 0, 1 + trial % 19, 1 + trial % 13};
    RECT dstRect = RandomRect(random, 10);
    RECT srcRect = RandomRect(random, 10);
    if (random.Between(0, 7)) {
      srcRect.right = srcRect.left + dstRect.right - dstRect.left;
      srcRect.bottom = srcRect.top + dstRect.bottom - dstRect.top;
    }
    if (random.Between(0, 1)) srcRect = {dstRect.left + 1, dstRect.top, dstRect.right + 1, dstRect.bottom};
    const auto width = [](const RECT& r) { return r.right - r.left; };
    const auto height = [](const RECT& r) { return r.bottom - r.top; };

    HRESULT want = S_OK;
    RECT dst = {}, src = {};
    if (width(dstRect) != width(srcRect) || height(dstRect) != height(srcRect)) {
      want = E_INVALIDARG;
    } else {
      dst = ReferenceIntersection(dstRect, dstBounds);
      src = ReferenceIntersection(srcRect, srcBounds);
      if (width(dst) != width(src) || height(dst) != height(src)) {
        const int32_t dx = dstRect.left - srcRect.left, dy = dstRect.top - srcRect.top;
        RECT moved = {src.left + dx, src.top + dy, src.right + dx, src.bottom + dy};
        moved = ReferenceIntersection(moved, dst);
        src = {moved.left - dx, moved.top - dy, moved.right - dx, moved.bottom - dy};
        if (width(dst) != width(src) || height(dst) != height(src)) want = E_INVALIDARG;
      }
    }
    int32_t gotWidth = -1, gotHeight = -1;
    const uint8_t* srcFirst = nullptr;
    uint8_t* dstFirst = nullptr;
    RECT gotSrc, gotDst;
    ASSERT_EQ(want, ZrDibPrepareTransform(&gotSrc, &gotWidth, &gotHeight, &srcFirst, &dstFirst, dstBits, &dstBounds,
                                          -100, &dstRect, srcBits, &srcBounds, 80, &srcRect, 4, &gotDst))
        << trial << " " << Text(dstRect) << " " << Text(srcRect);
    if (want != S_OK) {
      ++refused;
      continue;
    }
    ASSERT_EQ(width(dst), gotWidth);
    ASSERT_EQ(height(dst), gotHeight);
    if (gotWidth == 0) {
      ++empty;
      continue;
    }
    ++worked;
    ASSERT_EQ(dst.top * -100 + dst.left * 4, dstFirst - dstBits);
    ASSERT_EQ(src.top * 80 + src.left * 4, srcFirst - srcBits);
    ASSERT_TRUE(Same(dst, gotDst) && Same(src, gotSrc));
    int32_t plainWidth = 0;
    ASSERT_EQ(0, ZrDibPrepareCopy(&plainWidth, nullptr, nullptr, nullptr, dstBits, &dstBounds, -100, &dstRect, srcBits,
                                  &srcBounds, 80, &srcRect, 4));
    ASSERT_EQ(gotWidth, plainWidth);
  }
  EXPECT_GT(refused, 1000);
  EXPECT_GT(empty, 1000);
  EXPECT_GT(worked, 1000);
}

TEST(PrepareSet, LeavesResultsWhenNothingIsVisible) {
  uint8_t bits[1];
  const RECT bounds = {0, 0, 10, 10}, outside = {10, 0, 12, 2}, partly = {-3, 8, 4, 99};
  int32_t width = 77, height = 77;
  uint8_t* first = nullptr;
  EXPECT_EQ(0, ZrDibPrepareSet(&width, &height, &first, bits, &bounds, 40, &outside, 4));
  EXPECT_EQ(77, width);
  EXPECT_EQ(0, ZrDibPrepareSet(&width, &height, &first, bits, &bounds, 40, &partly, 4));
  EXPECT_EQ(4, width);
  EXPECT_EQ(2, height);
  EXPECT_EQ(320, first - bits);
  EXPECT_EQ(E_POINTER, ZrDibPrepareSet(&width, &height, &first, bits, nullptr, 40, &partly, 4));
}

TEST(GenericParam, FieldsOfAScaledCopy) {
  testing_support::Picture dst(ZRPIXEL_PAL4, 9, 6, 4), src(ZRPIXEL_RGB24, 10, 5);
  dst.header()->biClrUsed = 4;
  const RECT dstRect = {3, 1, 8, 5}, srcRect = {2, 1, 9, 3};
  tZRDIBGENERICPARAMS record;
  ASSERT_EQ(1, DibPrepareGenericParam(&record, dst.header(), 1.5, dst.bits(), &dstRect, dst.stride(), src.header(), 0,
                                      src.bits(), &srcRect, 0, 0xABCD0003));
  EXPECT_EQ(1u, record.scaled);
  EXPECT_EQ((7 * 16384 - 16384) / 4, record.srcStepX);
  EXPECT_EQ((2 * 16384 - 16384) / 3, record.srcStepY);
  EXPECT_EQ(dst.bits() + 1 * dst.stride() + 1, record.dstFirst);  // Column 3: byte 1, low half.
  EXPECT_EQ(4, record.dstBitOffset);
  EXPECT_EQ(src.bits() + 2 * 32 + 6, record.srcFirst);
  EXPECT_EQ(0, record.srcBitOffset);
  EXPECT_EQ(1.5, record.dstGamma);
  EXPECT_EQ(0xABCD0003u, record.flags);
  EXPECT_NE(nullptr, record.quantizer);
  EXPECT_EQ(nullptr, record.srcPalette);
  DibCleanupGenericParam(&record);
  EXPECT_EQ(nullptr, record.quantizer);
  // A palette destination without colours can't be prepared; neither can a video layout or a wide pixel's row.
  dst.header()->biClrUsed = 0;
  EXPECT_EQ(0, DibPrepareGenericParam(&record, dst.header(), 0, dst.bits(), nullptr, 0, src.header(), 0, src.bits(),
                                      nullptr, 0, 0));
  BITMAPINFOHEADER video = Header(ZRPIXEL_UYVY, 4, 4);
  EXPECT_EQ(0, DibPrepareGenericParam(&record, &video, 0, dst.bits(), nullptr, 0, src.header(), 0, src.bits(), nullptr,
                                      0, 0));
  BITMAPINFOHEADER wide = Header(ZRPIXEL_RGBA32, 4, 4);
  wide.biWidth = 1 << 29;
  EXPECT_EQ(
      0, DibPrepareGenericParam(&record, &wide, 0, dst.bits(), nullptr, 0, src.header(), 0, src.bits(), nullptr, 0, 0));
}

// ---- Sub-pixels ------------------------------------------------------------------------------------

TEST(SubpixelParam, PublishedSteps) {
  struct Case {
    int32_t srcSize, dstSize, step, finalEnd;
  };
  uint8_t pixel[4];
  for (const Case& c : {Case{4, 8, 7021, 65536}, Case{2, 4, 5461, 32768}, Case{4, 2, 49152, 65536},
                        Case{100, 50, 33102, 1638400}, Case{1920, 1280, 24582, 31457280},
                        Case{1280, 1920, 10919, 20970240}, Case{3, 5, 8191, 49150}, Case{9, 1, 0, 147456}}) {
    const SIZE srcSize = {c.srcSize, c.srcSize}, dstSize = {c.dstSize, c.dstSize};
    tZRDIBSUBPIXELPARAMS record;
    ASSERT_EQ(1, ZrPrepareSubpixelParam(&record, pixel, &dstSize, 8, nullptr, pixel, &srcSize, -8, nullptr));
    EXPECT_EQ(c.step, record.stepX) << c.srcSize << ">" << c.dstSize;
    EXPECT_EQ(c.finalEnd, record.srcFinal.bottom) << c.srcSize << ">" << c.dstSize;
    EXPECT_EQ(c.srcSize * 16384 / c.dstSize, record.scaleX);
    EXPECT_EQ(-8, record.srcTopStride);
  }
}

TEST(SubpixelParam, ThresholdsAndClipping) {
  testing_support::Picture dst(ZRPIXEL_RGBA32, 20, 20), src(ZRPIXEL_RGBA32, 2, 2);
  const SIZE dstSize = {20, 20}, srcSize = {2, 2};
  tZRDIBSUBPIXELPARAMS record;
  const auto descriptors = [&](const RECT& dstRect, const RECT& srcRect) {
    return DibPrepareSubpixelParam(&record, dst.header(), 0, dst.bits(), &dstRect, 0, src.header(), 0, src.bits(),
                                   &srcRect, 0, 0);
  };
  const auto bare = [&](const RECT& dstRect, const RECT& srcRect) {
    return ZrPrepareSubpixelParam(&record, dst.bits(), &dstSize, 80, &dstRect, src.bits(), &srcSize, 8, &srcRect);
  };
  const RECT whole = {0, 0, 32768, 32768};
  EXPECT_EQ(0, descriptors({0, 0, 16383, 32768}, whole));
  EXPECT_EQ(1, descriptors({0, 0, 16384, 32768}, whole));
  EXPECT_EQ(0, record.stepX);
  EXPECT_EQ(0, bare({0, 0, 1023, 32768}, whole));
  EXPECT_EQ(1, bare({0, 0, 1024, 32768}, whole));
  EXPECT_EQ(0, bare({0, 0, 32768, 32768}, {0, 0, 16383, 32768}));
  EXPECT_EQ(0, descriptors({20 * 16384 - 16383, 0, 25 * 16384, 32768}, whole));
  EXPECT_EQ(1, descriptors({20 * 16384 - 16384, 0, 25 * 16384, 32768}, whole));
  EXPECT_EQ(0, descriptors(whole, {40000, 0, 80000, 32768}));

  // Two pixels over twenty, three of them visible: less than a source pixel is left.
  const RECT hanging = {17 * 16384, 0, 37 * 16384, 16384};
  ASSERT_EQ(1, descriptors(hanging, whole));
  EXPECT_EQ(4914, record.srcFinal.right);
  EXPECT_LT(record.stepX, 0);
  ASSERT_EQ(1, bare(hanging, whole));
  EXPECT_EQ(0, record.stepX);
  EXPECT_EQ(dst.top(), [&] {
    descriptors(whole, whole);
    return record.dstTop;
  }());
  EXPECT_EQ(-80, record.dstTopStride);
  const RECT wild = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  for (const RECT& rect : {wild, hanging}) {
    bare(rect, wild);
    bare(wild, rect);
    descriptors(rect, wild);
  }
}

TEST(PluginParam, TypesSizesAndEmptiness) {
  testing_support::Picture a(ZRPIXEL_RGBA32, 8, 8), b(ZRPIXEL_RGB32, 8, 8), f(ZRPIXEL_RGBA128F, 8, 8),
      other(ZRPIXEL_RGBA64, 8, 8);
  tZRDIBPLUGINPARAMS record;
  int32_t isFloat = -1, isEmpty = -1;
  const auto prepare = [&](testing_support::Picture& dst, const RECT* dstRect, testing_support::Picture& src,
                           const RECT* srcRect) {
    return DibPreparePluginParam(&record, dst.header(), dst.bits(), dstRect, 0, src.header(), src.bits(), srcRect, 0, 5,
                                 &isFloat, &isEmpty);
  };
  const RECT part = {1, 2, 5, 6}, moved = {4, 4, 8, 8}, outside = {8, 0, 9, 1}, smaller = {0, 0, 3, 3};
  EXPECT_EQ(E_INVALIDARG, prepare(a, nullptr, b, nullptr));
  EXPECT_EQ(E_INVALIDARG, prepare(other, nullptr, other, nullptr));
  EXPECT_EQ(E_INVALIDARG, prepare(a, &part, a, &smaller));
  ASSERT_EQ(0, prepare(f, &part, f, &moved));
  EXPECT_EQ(1, isFloat);
  EXPECT_EQ(0, isEmpty);
  EXPECT_EQ(f.bits() + 2 * 128 + 16, record.dstFirst);
  EXPECT_EQ(f.bits() + 0 * 128 + 64, record.srcFirst);
  ASSERT_EQ(0, prepare(a, &outside, a, &outside));
  EXPECT_EQ(0, isFloat);
  EXPECT_EQ(1, isEmpty);
  EXPECT_EQ(E_POINTER, DibPreparePluginParam(nullptr, a.header(), nullptr, nullptr, 0, a.header(), nullptr, nullptr, 0,
                                             0, nullptr, nullptr));
  EXPECT_EQ(E_POINTER, DibPreparePluginParam(&record, nullptr, nullptr, nullptr, 0, a.header(), nullptr, nullptr, 0, 0,
                                             nullptr, nullptr));
}

}  // namespace
