// SPDX-License-Identifier: Apache-2.0
// The calls on formats: codes, channel maps, gains, the stereo FLOAT32 calls and the self-check.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "audio/copy.h"
#include "audio/copy_unittest.h"
#include "audio/sample_data.h"
#include "marlo110k/errors.h"

using namespace sample_reference;

namespace {

_zrwaveformat FormatOf(uint32_t type, uint16_t channels) {
  _zrwaveformat format;
  std::memset(&format, 0, sizeof format);
  format.size = 32;
  format.sampleType = type;
  format.channels = channels;
  format.samplesPerSec = 48000;
  return format;
}

WAVEFORMATEX WfxOf(uint16_t tag, uint16_t bits, uint16_t channels) {
  return {tag, channels, 48000, 0, static_cast<uint16_t>(channels * bits / 8), bits, 0};
}

TEST(SampleCalls, UnservedPairsAndEmptyCounts) {
  const auto unpacked = FormatOf(48, 1);
  const auto bigEndian = FormatOf(64, 1);
  const auto none = FormatOf(0, 1);
  const auto pcm16 = FormatOf(17, 1);
  const _zrwaveformat* null = nullptr;
  uint8_t source[64] = {};
  uint8_t dest[64] = {};
  const double gains[1] = {1.0};
  const int32_t map[1] = {0};
  EXPECT_EQ(ZrAudio_Copy(&bigEndian, dest, &unpacked, source, 4, 1.0f), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_CopyChannels(&bigEndian, dest, &unpacked, source, 4, map), S_OK);
  EXPECT_EQ(ZrAudio_CopyChannels(&bigEndian, dest, &unpacked, source, 4, nullptr), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_CopyChannels(&none, dest, &pcm16, source, 4, map), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_Copy(null, dest, &pcm16, source, 4, 1.0f), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_Copy(&pcm16, dest, null, source, 4, 1.0f), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_Mix(&pcm16, dest, &bigEndian, source, 4, gains), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_MixChannels(&pcm16, dest, &bigEndian, source, 4, map, gains), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_MixEx(&bigEndian, dest, &pcm16, source, 4, nullptr), E_NOTIMPL);
  tZRASRCOOKED cooked = {};
  EXPECT_EQ(ZrAudio_MixEx(&bigEndian, dest, &pcm16, source, 4, &cooked), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_SetGain(dest, &pcm16, 4, gains), E_FAIL);
  // No frames: nothing to ask for.
  for (const int64_t frames : {int64_t{0}, int64_t{-3}}) {
    EXPECT_EQ(ZrAudio_Copy(&bigEndian, dest, &unpacked, source, frames, 1.0f), S_OK);
    EXPECT_EQ(ZrAudio_CopyChannels(&none, dest, &pcm16, source, frames, map), S_OK);
    EXPECT_EQ(ZrAudio_Mix(&pcm16, dest, &bigEndian, source, frames, gains), S_OK);
    EXPECT_EQ(ZrAudio_MixChannels(&pcm16, dest, &bigEndian, source, frames, map, gains), S_OK);
    EXPECT_EQ(ZrAudio_MixEx(&bigEndian, dest, &pcm16, source, frames, &cooked), S_OK);
  }
  for (const uint8_t byte : dest) EXPECT_EQ(byte, 0);
}

// The four overloads of a call look at the same formats.
TEST(SampleCalls, DescriptorsOfEitherKind) {
  const auto zrFloat = FormatOf(32, 2);
  const auto zrPcm = FormatOf(17, 2);
  const auto wfxFloat = WfxOf(WAVE_FORMAT_IEEE_FLOAT, 32, 2);
  const auto wfxPcm = WfxOf(WAVE_FORMAT_PCM, 16, 2);
  const int16_t source[4] = {16384, -16384, 32767, -32768};
  const std::vector<float> expected = {0.5f, -0.5f, 32767.0f / 32768, -1.0f};
  const double gains[2] = {1.0, 1.0};
  const int32_t map[2] = {0, 1};
  const auto check = [&](const auto* to, const auto* from) {
    std::vector<float> dest(4, 9.0f);
    EXPECT_EQ(ZrAudio_Copy(to, dest.data(), from, source, 2, 1.0f), S_OK);
    EXPECT_EQ(dest, expected);
    dest.assign(4, 0.0f);
    EXPECT_EQ(ZrAudio_CopyChannels(to, dest.data(), from, source, 2, map), S_OK);
    EXPECT_EQ(dest, expected);
    dest.assign(4, 0.0f);
    EXPECT_EQ(ZrAudio_Mix(to, dest.data(), from, source, 2, gains), S_OK);
    EXPECT_EQ(dest, expected);
    dest.assign(4, 0.0f);
    EXPECT_EQ(ZrAudio_MixChannels(to, dest.data(), from, source, 2, map, gains), S_OK);
    EXPECT_EQ(dest, expected);
    dest.assign(4, 0.0f);
    EXPECT_EQ(ZrAudio_MixEx(to, dest.data(), from, source, 2, nullptr), S_OK);
    EXPECT_EQ(dest, expected);
    EXPECT_EQ(ZrAudio_GetCopyFunction(to, from), ZrAudio_GetCopyFunction2(32, 17));
    EXPECT_EQ(ZrAudio_GetCopyChannelsFunction(to, from), ZrAudio_GetCopyChannelsFunction2(32, 17));
    EXPECT_EQ(ZrAudio_GetMixFunction(to, from), ZrAudio_GetMixFunction2(32, 17));
    EXPECT_EQ(ZrAudio_GetMixChannelsFunction(to, from), ZrAudio_GetMixChannelsFunction2(32, 17));
    EXPECT_NE(ZrAudio_GetMixExFunction(to, from), nullptr);
  };
  check(&zrFloat, &zrPcm);
  check(&zrFloat, &wfxPcm);
  check(&wfxFloat, &zrPcm);
  check(&wfxFloat, &wfxPcm);
}

TEST(SampleCalls, ChannelMaps) {
  const auto three = FormatOf(17, 3);
  const auto two = FormatOf(32, 2);
  const int16_t source[6] = {8192, 16384, 24576, -8192, -16384, -24576};
  struct Row {
    const char* what;
    int32_t map[3];
    std::vector<float> copied, mixed;  // Mixed at gains 1, 2 and 1 onto 0.125.
  };
  const Row rows[] = {
      {"crossed, third nowhere", {1, 0, -1}, {0.5f, 0.25f, -0.5f, -0.25f}, {1.125f, 0.375f, -0.875f, -0.125f}},
      {"beyond the destination", {2, 1, 100}, {9, 0.5f, 9, -0.5f}, {0.125f, 1.125f, 0.125f, -0.875f}},
      {"all nowhere", {-1, INT32_MIN, -7}, {9, 9, 9, 9}, {0.125f, 0.125f, 0.125f, 0.125f}},
      {"two into one: the later copy stays, mixes add up",
       {0, -1, 0},
       {0.75f, 9, -0.75f, 9},
       {1.125f, 0.125f, -0.875f, 0.125f}},
  };
  const double gains[3] = {1.0, 2.0, 1.0};
  for (const Row& row : rows) {
    std::vector<float> dest(4, 9.0f);
    EXPECT_EQ(ZrAudio_CopyChannels(&two, dest.data(), &three, source, 2, row.map), S_OK);
    EXPECT_EQ(dest, row.copied) << row.what;
    dest.assign(4, 0.125f);
    EXPECT_EQ(ZrAudio_MixChannels(&two, dest.data(), &three, source, 2, row.map, gains), S_OK);
    EXPECT_EQ(dest, row.mixed) << row.what;
  }
}

TEST(SampleCalls, MixExWithoutARampMixesAtUnity) {
  const auto pcm16 = FormatOf(17, 6);  // More channels than the unit table has entries.
  std::vector<int16_t> source(60);
  std::iota(source.begin(), source.end(), int16_t{1});
  std::vector<int16_t> dest(60, 1000);
  tZRASRCOOKED cooked = {};
  cooked.gain = 0.25;
  EXPECT_EQ(ZrAudio_MixEx(&pcm16, dest.data(), &pcm16, source.data(), 10, &cooked), 1);
  for (size_t n = 0; n < 60; ++n) EXPECT_EQ(dest[n], 1001 + static_cast<int>(n));
  EXPECT_EQ(ZrAudio_MixEx(&pcm16, dest.data(), &pcm16, source.data(), 10, nullptr), S_OK);
  EXPECT_EQ(dest[59], 1120);
}

TEST(SetGain, BothFloatTypes) {
  const auto single = FormatOf(32, 3);
  const auto wide = WfxOf(WAVE_FORMAT_IEEE_FLOAT, 64, 3);
  const double gains[3] = {0.1, -2.0, 0.0};
  float singles[6] = {1.5f, 1.5f, 1.5f, 0.3f, 0.3f, 0.3f};
  double doubles[6] = {1.5, 1.5, 1.5, 0.3, 0.3, 0.3};
  EXPECT_EQ(ZrAudio_SetGain(singles, &single, 2, gains), S_OK);
  EXPECT_EQ(ZrAudio_SetGain(doubles, &wide, 2, gains), S_OK);
  EXPECT_EQ(singles[0], 1.5f * 0.1f);  // The gain is a single first.
  EXPECT_EQ(singles[3], 0.3f * 0.1f);
  EXPECT_EQ(singles[4], -0.6f);
  EXPECT_EQ(singles[5], 0.0f);
  EXPECT_EQ(doubles[0], 1.5 * 0.1);
  EXPECT_EQ(doubles[1], -3.0);
  EXPECT_EQ(doubles[3], 0.3 * 0.1);
}

// ---- Stereo FLOAT32 --------------------------------------------------------------------------------------

TEST(LowLevel, GainAndPanForEveryCountAndAlignment) {
  const ProcessorScope scope;
  testing_support::Random random(2240);
  SCOPED_TRACE(random.Label());
  const tZRENGINE_PAN2STEREO pan = {0.9f, 0.8f, 0.3f, -0.2f};
  const tZRENGINE_PAN2STEREO straight = {0.9f, 0.8f, 0.0f, -0.0f};
  for (const Members members : {Members::kPlain, Members::kAll}) {
    Allow(members);
    for (int64_t frames = 0; frames <= 9; ++frames) {
      for (const int32_t mix : {0, 1, 7}) {
        for (const size_t offset : {size_t{0}, size_t{1}}) {
          alignas(16) float source[24];
          alignas(16) float before[24];
          for (float& value : source) value = static_cast<float>(random.Real(-1, 1));
          for (float& value : before) value = static_cast<float>(random.Real(-1, 1));
          alignas(16) float gained[24];
          alignas(16) float panned[24];
          alignas(16) float plain[24];
          std::memcpy(gained, before, sizeof before);
          std::memcpy(panned, before, sizeof before);
          std::memcpy(plain, before, sizeof before);
          const float gains[2] = {0.9f, 0.8f};
          LowLevel_1To1_StaticGain_Float(gained + offset, source + offset, frames, gains, mix);
          LowLevel_1To1_StaticPan_Float(panned + offset, source + offset, frames, &pan, mix);
          LowLevel_1To1_StaticPan_Float(plain + offset, source + offset, frames, &straight, mix);
          for (size_t n = 0; n < 24; ++n) {
            const bool inside = n >= offset && n < offset + static_cast<size_t>(frames) * 2;
            float gain = before[n];
            float both = before[n];
            if (inside) {
              const bool left = (n - offset) % 2 == 0;
              const float same = (left ? 0.9f : 0.8f) * source[n];
              const float cross = left ? -0.2f * source[n + 1] : 0.3f * source[n - 1];
              gain = mix ? before[n] + same : same;
              both = mix ? before[n] + (same + cross) : same + cross;
            }
            EXPECT_EQ(gained[n], gain) << n;
            EXPECT_EQ(panned[n], both) << n;
            EXPECT_EQ(plain[n], gain) << "no cross gains: " << n;
          }
        }
      }
    }
  }
}

// At 1.0 the bits are moved, also those that a multiplication would change.
TEST(LowLevel, UnitGainsMoveTheBits) {
  const uint32_t words[4] = {0x7F800001, 0xFFC12345, 0x00000001, 0x80000000};
  float source[4];
  std::memcpy(source, words, sizeof words);
  float dest[4] = {};
  const float gains[2] = {1.0f, 1.0f};
  LowLevel_1To1_StaticGain_Float(dest, source, 2, gains, 0);
  EXPECT_EQ(std::memcmp(dest, words, sizeof words), 0);
}

// ---- The self-check --------------------------------------------------------------------------------------

int brokenCalls = 0;

/// PCM16 from FLOAT32 that cuts where it should round.
void CutToPcm16(void* dest, const void* source, int64_t samples, float) noexcept {
  ++brokenCalls;
  auto* to = static_cast<int16_t*>(dest);
  const auto* from = static_cast<const float*>(source);
  for (int64_t n = 0; n < samples; ++n) to[n] = static_cast<int16_t>(std::trunc(from[n] * 32768.0f));
}

TEST(CopyUnitTest, PassesWithAllMembers) {
  const ProcessorScope scope;
  // From here on the class says that the SSE2 members are to be checked, too.
  ZrSetCPUClassBySupport();
  ASSERT_EQ(ZrGetCPUSupport(ZRCPU_CLASS) & ZRCPU_CLASS, 6u);
  EXPECT_EQ(ZrAudioCopy_UnitTest(nullptr), S_OK);
}

TEST(CopyUnitTest, FindsABrokenKernel) {
  marlo::CopyCheck check = {17, 32, marlo::CopyMemberPlain(32, 17), marlo::CopyMemberPlain(17, 32)};
  EXPECT_EQ(marlo::RunCopyCheck(check), S_OK);
  check.toInteger = CutToPcm16;
  EXPECT_EQ(marlo::RunCopyCheck(check), E_UNEXPECTED);
  EXPECT_GT(brokenCalls, 0);
  // 16 bits can't carry 24.
  marlo::CopyCheck narrow = {18, 32, marlo::CopyMemberPlain(32, 18), marlo::CopyMemberPlain(18, 32)};
  EXPECT_EQ(marlo::RunCopyCheck(narrow), S_OK);
  narrow.toFloat = [](void* dest, const void* source, int64_t samples, float gain) noexcept {
    std::vector<int16_t> words(static_cast<size_t>(samples));
    marlo::CopyMemberPlain(17, 18)(words.data(), source, samples, gain);
    marlo::CopyMemberPlain(32, 17)(dest, words.data(), samples, gain);
  };
  EXPECT_EQ(marlo::RunCopyCheck(narrow), E_UNEXPECTED);
}

// The report's own words, and a box only for a window.
std::u16string shownText;

uint32_t TakeBox(void*, HZRWINDOW, const char16_t* text, const char16_t*, uint32_t) {
  shownText = text;
  return ZRID_OK;
}

TEST(CopyUnitTest, FailureAddsDetailsAndShowsABoxOverAWindow) {
  ZrErrorHandler_DetailsInit();
  ZrMsgBoxSetAppData(nullptr, nullptr, nullptr);
  ASSERT_EQ(ZrMsgBoxSetHook(TakeBox, nullptr), 1);
  marlo::ReportCopyCheckFailure(E_UNEXPECTED, 9, nullptr);
  EXPECT_EQ(shownText, u"");
  marlo::ReportCopyCheckFailure(E_UNEXPECTED, 10, kZrNoParent);
  EXPECT_EQ(shownText, u"INTERNAL: AudioCopy unit test failed!");
  HRESULT code = S_OK;
  int32_t lines = 0;
  const char16_t* details = ZrErrorHandler_DetailsInfo(&code, &lines, nullptr);
  ASSERT_NE(details, nullptr);
  EXPECT_EQ(std::u16string(details),
            u"ZrAudioCopy_UnitTest node[9] failed.\r\nZrAudioCopy_UnitTest node[10] failed.\r\n");
  EXPECT_EQ(code, E_UNEXPECTED);
  EXPECT_EQ(lines, 2);
  ZrMsgBoxSetHook(nullptr, nullptr);
  ZrErrorHandler_DetailsInit();
}

}  // namespace
