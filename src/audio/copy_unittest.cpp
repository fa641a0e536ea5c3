// SPDX-License-Identifier: Apache-2.0
// The self-check of the copy family that a host can call.
#include "audio/copy_unittest.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "audio/copy.h"
#include "audio/kernel_table.h"
#include "marlo110k/errors.h"

namespace marlo {

namespace {

/// Values of a 24-bit type that are converted at a time.
constexpr int64_t kBlockValues = 65536;

/// Adds `error` to each value. Half a step of a 24-bit type is one unit in the last place of a single close
/// to 1.0, so the sum may round onto the tie or over it: then it is drawn back by one unit to the side where
/// it belongs. No sum is 0, so a unit is one of the bit pattern, down or up with the sign.
template <class Value, class Bits>
void Disturb(Value* values, int64_t count, double error) noexcept {
  for (int64_t n = 0; n < count; ++n) {
    const double tie = static_cast<double>(values[n]) + error;
    auto moved = static_cast<Value>(tie);
    const bool reached = error > 0 ? static_cast<double>(moved) >= tie : static_cast<double>(moved) <= tie;
    const Bits unit = (moved > 0) == (error > 0) ? -1 : 1;
    moved = std::bit_cast<Value>(std::bit_cast<Bits>(moved) + (reached ? unit : 0));
    values[n] = std::clamp(moved, Value{-1}, Value{1});
  }
}

struct Blocks {
  uint8_t before[kBlockValues * 4];
  uint8_t after[kBlockValues * 4];
  alignas(16) uint8_t floats[kBlockValues * 8];
};

template <class Rule, class FloatRule>
HRESULT CheckAllValues(const CopyCheck& check, Blocks& blocks) noexcept {
  constexpr double kHalfStep = 0.5 * Rule::kReadFactor;
  for (int64_t first = Rule::kRawLow; first <= Rule::kRawHigh; first += kBlockValues) {
    const int64_t count = std::min<int64_t>(kBlockValues, Rule::kRawHigh - first + 1);
    for (int64_t n = 0; n < count; ++n) {
      Rule::Write(blocks.before + n * Rule::kBytes, static_cast<int32_t>(first + n));
    }
    for (const double error : {kHalfStep, -kHalfStep}) {
      check.toFloat(blocks.floats, blocks.before, count, 1.0f);
      using Value = typename FloatRule::Raw;
      using Bits = std::conditional_t<sizeof(Value) == 4, int32_t, int64_t>;
      Disturb<Value, Bits>(reinterpret_cast<Value*>(blocks.floats), count, error);
      check.toInteger(blocks.after, blocks.floats, count, 1.0f);
      if (std::memcmp(blocks.before, blocks.after, static_cast<size_t>(count * Rule::kBytes)) != 0) return E_UNEXPECTED;
    }
  }
  return S_OK;
}

using CheckedRules =
    RuleList<Pcm8Rule, Pcm8SignedRule, Pcm16Rule, Pcm16BeRule, Pcm24Rule, Pcm24BeRule, Pcm24UnpackedRule>;
constexpr std::array<uint32_t, CheckedRules::kCount> kCheckedTypes = {
    ZRSAMPLETYPE_PCM8,  ZRSAMPLETYPE_PCM8SIGNED, ZRSAMPLETYPE_PCM16,        ZRSAMPLETYPE_PCM16BE,
    ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM24BE,    ZRSAMPLETYPE_PCM24UNPACKED};
constexpr std::array<uint32_t, 2> kFloatTypes = {ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_FLOAT64};

/// The plain members of a pair and, where the getter gives others at this moment, those too.
HRESULT CheckPair(uint32_t integerType, uint32_t floatType) noexcept {
  const CopyCheck plain = {integerType, floatType, CopyMemberPlain(floatType, integerType),
                           CopyMemberPlain(integerType, floatType)};
  const HRESULT result = RunCopyCheck(plain);
  if (FAILED(result)) return result;
  const CopyCheck chosen = {integerType, floatType, ZrAudio_GetCopyFunction2(floatType, integerType),
                            ZrAudio_GetCopyFunction2(integerType, floatType)};
  if (chosen.toFloat == plain.toFloat && chosen.toInteger == plain.toInteger) return S_OK;
  return RunCopyCheck(chosen);
}

/// The SSE2 members of PCM16 and FLOAT32: each beside a plain one, then both.
HRESULT CheckSse2(int32_t combination) noexcept {
  constexpr uint32_t kInteger = ZRSAMPLETYPE_PCM16;
  constexpr uint32_t kFloat = ZRSAMPLETYPE_FLOAT32;
  return RunCopyCheck({kInteger, kFloat,
                       combination != 1 ? CopyMemberSse2(kFloat, kInteger) : CopyMemberPlain(kFloat, kInteger),
                       combination != 0 ? CopyMemberSse2(kInteger, kFloat) : CopyMemberPlain(kInteger, kFloat)});
}

}  // namespace

HRESULT RunCopyCheck(const CopyCheck& check) noexcept {
  const std::unique_ptr<Blocks> blocks(new (std::nothrow) Blocks);
  if (!blocks) return E_OUTOFMEMORY;
  HRESULT result = E_NOTIMPL;
  VisitRule(CheckedRules{}, check.integerType, [&](auto rule) noexcept {
    VisitRule(RuleList<Float32Rule, Float64Rule>{}, check.floatType, [&](auto floatRule) noexcept {
      result = CheckAllValues<decltype(rule), decltype(floatRule)>(check, *blocks);
    });
  });
  return result;
}

void ReportCopyCheckFailure(HRESULT code, int32_t node, HZRWINDOW window) noexcept {
  ZrErrorHandler_DetailsAddString(code, u"ZrAudioCopy_UnitTest node[%d] failed.", node);
  if (window) ZrMessageBox(window, u"INTERNAL: AudioCopy unit test failed!", nullptr, ZRMB_OK | ZRMB_ICONHAND);
}

}  // namespace marlo

HRESULT ZrAudioCopy_UnitTest(HZRWINDOW window) noexcept {
  using namespace marlo;
  constexpr int32_t kPairs = static_cast<int32_t>(kCheckedTypes.size() * kFloatTypes.size());
  constexpr int32_t kSse2Pairs = 3;
  constexpr uint32_t kSse2Class = 6;  // Only ZrSetCPUClassBySupport sets it.
  const bool hasSse2Class = (ZrGetCPUSupport(ZRCPU_CLASS) & ZRCPU_CLASS) == kSse2Class;
  for (int32_t node = 0; node < kPairs + (hasSse2Class ? kSse2Pairs : 0); ++node) {
    const HRESULT result = node < kPairs ? CheckPair(kCheckedTypes[static_cast<size_t>(node / 2)],
                                                     kFloatTypes[static_cast<size_t>(node % 2)])
                                         : CheckSse2(node - kPairs);
    if (result == S_OK) continue;
    if (result == E_UNEXPECTED) ReportCopyCheckFailure(result, node, window);
    return result;
  }
  return S_OK;
}
