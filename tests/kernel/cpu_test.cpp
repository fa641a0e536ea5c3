// SPDX-License-Identifier: Apache-2.0
// The processor word on injected processors, and the masks over this machine's word.
#include "marlo110k/cpu.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "kernel/cpu_detection.h"
#include "marlo110k/kernel.h"
#include "platform/base/cpu.h"
#include "platform/base/fpu.h"

namespace {

/// A processor made of the leaves that detection reads.
struct FakeProcessor {
  uint32_t highestLeaf = 1;
  uint32_t edx = 0;
  uint32_t ecx = 0;
  std::string vendor = "GenuineIntel";  // 12 characters in EBX, EDX, ECX
  std::string brand;                    // 48 characters
  uint32_t highestExtended = 0x80000004;
};

plat::CpuidLeaf LeafOf(uint32_t leaf, void* context) {
  const FakeProcessor& fake = *static_cast<const FakeProcessor*>(context);
  plat::CpuidLeaf result{};
  if (leaf == 0) {
    result.eax = fake.highestLeaf;
    std::memcpy(&result.ebx, fake.vendor.data(), 4);
    std::memcpy(&result.edx, fake.vendor.data() + 4, 4);
    std::memcpy(&result.ecx, fake.vendor.data() + 8, 4);
  } else if (leaf == 1) {
    result.edx = fake.edx;
    result.ecx = fake.ecx;
  } else if (leaf == 0x80000000) {
    result.eax = fake.highestExtended;
  } else if (leaf >= 0x80000002 && leaf <= 0x80000004) {
    std::memcpy(&result, fake.brand.data() + (leaf - 0x80000002) * 16, 16);
  }
  return result;
}

class CpuidGuard {
 public:
  explicit CpuidGuard(FakeProcessor* fake) { plat::SetCpuidSource(LeafOf, fake); }
  ~CpuidGuard() { plat::SetCpuidSource(nullptr, nullptr); }
};

bool Yes() { return true; }
bool No() { return false; }

constexpr uint32_t kFpu = 1, kTsc = 1 << 4, kCmov = 1 << 15, kMmx = 1 << 23, kSse = 1 << 25, kSse2 = 1 << 26;
constexpr uint32_t kAllEcx = 1 | 1 << 9 | 1 << 19 | 1 << 20 | 1 << 28;  // SSE3, SSSE3, SSE4.1, SSE4.2, AVX

TEST(CpuDetection, WordsOfProcessors) {
  const struct {
    const char* name;
    uint32_t type, highestLeaf, edx, ecx;
    bool (*sse)();
    bool (*daz)();
    uint32_t hardware, system, usable;
  } kRows[] = {
      {"a 486 is not asked", 486, 1, 0xFFFFFFFF, 0xFFFFFFFF, Yes, Yes, 0, 0, 1},
      {"a Pentium without leaf 1", 586, 0, 0xFFFFFFFF, 0xFFFFFFFF, Yes, Yes, 0, 0, 2},
      {"a Pentium MMX", 586, 1, kFpu | kTsc | kMmx, 0, Yes, Yes, 0x4010, 0x10, 0x4002},
      {"moves without a float unit", 586, 1, kTsc | kCmov, 0, Yes, Yes, 0x5000, 0, 0x5002},
      {"moves and a float unit", 586, 1, kFpu | kTsc | kCmov | kMmx, 0, Yes, Yes, 0x7010, 0x10, 0x7003},
      {"SSE alone", 586, 1, kFpu | kTsc | kCmov | kMmx | kSse, 0, Yes, Yes, 0x27030, 0x30, 0x27023},
      {"SSE that faults", 8664, 1, kFpu | kTsc | kCmov | kMmx | kSse | kSse2, kAllEcx, No, Yes, 0x7FF0, 0x10, 0x7003},
      {"a refused control word", 8664, 1, kFpu | kTsc | kCmov | kMmx | kSse | kSse2, 1, Yes, No, 0x70F0, 0xF0, 0x70E3},
      {"everything", 8664, 1, 0xFFFFFFFF, 0xFFFFFFFF, Yes, Yes, 0x27FF0, 0x7F0, 0x277E3},
      {"no float unit", 8664, 7, 0xFFFFFFFE, kAllEcx, Yes, Yes, 0x25FF0, 0x7F0, 0x257E0},
      {"another kind", 386, 1, 0xFFFFFFFF, 0xFFFFFFFF, Yes, Yes, 0, 0, 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    FakeProcessor fake;
    fake.highestLeaf = row.highestLeaf;
    fake.edx = row.edx;
    fake.ecx = row.ecx;
    const CpuidGuard guard(&fake);
    const marlo::ProcessorWords words = marlo::DetectProcessor(row.type, {row.sse, row.daz});
    EXPECT_EQ(row.hardware, words.hardware) << std::hex << words.hardware;
    EXPECT_EQ(row.system, words.system) << std::hex << words.system;
    EXPECT_EQ(row.usable, words.usable) << std::hex << words.usable;
  }
}

TEST(CpuDetection, TheMachineProbeTurnsDenormalsOff) {
  const plat::FloatStateGuard guard(plat::kCleanFloatState);
  EXPECT_TRUE(marlo::MachineProbes().runsSse());
  ASSERT_TRUE(marlo::MachineProbes().flushesDenormals());
  EXPECT_EQ(plat::kRenderFloatState, plat::FloatState());
}

/// The masks of the process; the folded usable word can only lose bits, so tests put all of them back.
class CpuMaskTest : public testing::Test {
 protected:
  void TearDown() override { ZrAllowCPUSupport(0xFFFFFFFF); }
};

TEST_F(CpuMaskTest, FiltersAndMasks) {
  const uint32_t all = ZrGetCPUSupport(0);
  EXPECT_EQ(uint32_t{ZRCPU_SSE | ZRCPU_SSE2}, all & (ZRCPU_SSE | ZRCPU_SSE2));
  EXPECT_EQ(3U, ZrGetCPUSupport(15));
  EXPECT_EQ(64U, ZrGetCPUSupport(64));
  EXPECT_EQ(0U, ZrGetCPUSupport(ZRCPU_MMX)) << "MMX is never usable";
  EXPECT_EQ(0U, ZrGetCPUSupport(ZRCPU_AVX)) << "AVX is never usable";
  EXPECT_EQ(0U, ZrGetOSSupport(ZRCPU_AVX));
  EXPECT_EQ(uint32_t{ZRCPU_MMX}, ZrGetOSSupport(ZRCPU_MMX));
  EXPECT_EQ(all & 0x7E0, ZrGetOSSupport(0x7E0));
  EXPECT_GE(ZrGetProcessorCount(), 1U);

  EXPECT_EQ(1, ZrOnlyAllowCPUSupport(ZRCPU_SSE));
  EXPECT_EQ(uint32_t{ZRCPU_SSE}, ZrGetCPUSupport(ZRCPU_FEATURES));
  EXPECT_EQ(0U, ZrGetCPUHardwareSupport(ZRCPU_SSE2));
  EXPECT_EQ(uint32_t{ZRCPU_SSE2}, ZrGetOSSupport(ZRCPU_SSE2)) << "the masks don't reach the system's word";
  EXPECT_EQ(all & ~uint32_t{ZRCPU_FEATURES}, ZrGetCPUSupport(0) & ~uint32_t{ZRCPU_FEATURES});
  EXPECT_EQ(0, ZrOnlyAllowCPUSupport(0x1000));
  EXPECT_EQ(0, ZrOnlyAllowCPUSupport(0x1020));
  EXPECT_EQ(uint32_t{ZRCPU_SSE}, ZrGetCPUSupport(ZRCPU_FEATURES));
  EXPECT_EQ(1, ZrOnlyAllowCPUSupport(0));
  EXPECT_EQ(0U, ZrGetCPUSupport(ZRCPU_FEATURES));
  EXPECT_EQ(1, ZrAllowCPUSupport(ZRCPU_FEATURES));
  EXPECT_EQ(all, ZrGetCPUSupport(0));
  EXPECT_EQ(1, ZrDisallowCPUSupport(ZRCPU_SSE2));
  EXPECT_EQ(0U, ZrGetCPUSupport(ZRCPU_SSE2));
}

// The class override and the folded word can't be taken back, so their tests run in processes of their own.

[[noreturn]] void ExitWith(bool held) { std::_Exit(held ? 0 : 1); }

TEST(CpuMaskDeathTest, ClassBySupport) {
  const struct { uint32_t disallowed, expected; } kRows[] = {{0, 6}, {0x40, 5}, {0x60, 4}, {0x70, 0}};
  for (const auto& row : kRows) {
    EXPECT_EXIT(
        {
          ZrDisallowCPUSupport(row.disallowed);
          const bool result = ZrSetCPUClassBySupport() == 1;
          // The override shows under any filter; the detected class no longer does.
          ExitWith(result && ZrGetCPUSupport(15) == row.expected &&
                   ZrGetCPUSupport(ZRCPU_TSC) == (ZRCPU_TSC | row.expected) && ZrGetCPUHardwareSupport(15) == 0);
        },
        testing::ExitedWithCode(0), "")
        << row.disallowed;
  }
}

TEST(CpuMaskDeathTest, InitialisationFoldsWhatIsDisallowed) {
  EXPECT_EXIT(
      {
        ZrDisallowCPUSupport(ZRCPU_SSE2);
        ZrKernel_EarlyInitialize(ZrKernel_GetAppKernel(), 1);
        ZrAllowCPUSupport(ZRCPU_SSE2);
        ExitWith(ZrGetCPUSupport(ZRCPU_SSE2) == 0 && ZrGetCPUSupport(ZRCPU_SSE) == ZRCPU_SSE &&
                 ZrGetOSSupport(ZRCPU_SSE2) == ZRCPU_SSE2);
      },
      testing::ExitedWithCode(0), "");
}

TEST(CpuStrings, VendorAndBrand) {
  FakeProcessor fake;
  fake.vendor = " Genuine Co ";
  fake.brand = "   A Processor \x01 of 48 characters, 3.0 GHz       ";
  fake.brand.resize(48, ' ');
  const CpuidGuard guard(&fake);
  char16_t text[49];
  EXPECT_EQ(E_FAIL, ZrGetCPUVendorString(text, 12));
  EXPECT_EQ(E_FAIL, ZrGetCPUVendorString(nullptr, 99));
  EXPECT_EQ(S_OK, ZrGetCPUVendorString(text, 13));
  EXPECT_EQ(std::u16string(u"Genuine Co"), text);
  EXPECT_EQ(E_FAIL, ZrGetCPUBrandString(text, 48));
  EXPECT_EQ(S_OK, ZrGetCPUBrandString(text, 49));
  EXPECT_EQ(std::u16string(u"A Processor"), text) << "an unprintable byte ends the text";
  fake.highestExtended = 0x80000003;
  EXPECT_EQ(E_FAIL, ZrGetCPUBrandString(text, 49));
}

TEST(CpuStrings, FourCC) {
  char16_t text[5] = {1, 1, 1, 1, 1};
  ZrFourCCToStringCPU(0x7F7E201F, text);
  EXPECT_EQ(0, text[0]);
  EXPECT_EQ(u' ', text[1]);
  EXPECT_EQ(u'~', text[2]);
  EXPECT_EQ(0, text[3]);
  EXPECT_EQ(0, text[4]);
  ZrFourCCToStringCPU(0x756E6547, text);
  EXPECT_EQ(std::u16string(u"Genu"), text);
}

TEST(StripWhiteSpace, BothEndsUpToTheBlank) {
  const struct {
    const char16_t* text;
    const char16_t* stripped;
  } kRows[] = {{u"", u""},
               {u" \t\r\n", u""},
               {u"a", u"a"},
               {u"  a b\x01 ", u"a b"},
               {u"\x1F!a", u"!a"},
               {u"a\x00A0", u"a\x00A0"},
               {u"\x3000z ", u"\x3000z"}};
  for (const auto& row : kRows) {
    std::u16string text = row.text;
    EXPECT_EQ(text.data(), ZrStripWhiteSpace(text.data()));
    EXPECT_EQ(std::u16string(row.stripped), text.c_str());
  }
  EXPECT_EQ(nullptr, ZrStripWhiteSpace(nullptr));
}

}  // namespace
