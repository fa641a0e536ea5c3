// SPDX-License-Identifier: Apache-2.0
// The zero-filled heap, platform strings, pages and the processor's facts.
#include "platform/base/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/base/cpu.h"
#include "platform/sys/fault.h"
#include "platform/sys/mapping.h"
#include "testing/temp_folder.h"

namespace plat {
namespace {

bool AllZero(const void* block, size_t from, size_t to) {
  const unsigned char* bytes = static_cast<const unsigned char*>(block);
  return std::all_of(bytes + from, bytes + to, [](unsigned char byte) { return byte == 0; });
}

TEST(Memory, BlocksAreZeroAlsoWhereTheyGrow) {
  const int64_t before = LiveBlocks();
  void* block = AllocateZeroed(100);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u);
  EXPECT_EQ(BlockBytes(block), 100u);
  EXPECT_TRUE(AllZero(block, 0, 100));
  std::memset(block, 0xAA, 100);
  block = ReallocateZeroed(block, 40);
  EXPECT_EQ(BlockBytes(block), 40u);
  block = ReallocateZeroed(block, 5'000);
  EXPECT_EQ(static_cast<unsigned char*>(block)[39], 0xAA);
  EXPECT_TRUE(AllZero(block, 40, 5'000)) << "what was cut off must not come back";
  block = ReallocateZeroed(block, 0);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(BlockBytes(block), 0u);
  EXPECT_EQ(LiveBlocks(), before + 1);
  FreeBlock(block);
  EXPECT_EQ(LiveBlocks(), before);
  FreeBlock(nullptr);
  EXPECT_EQ(BlockBytes(nullptr), 0u);
}

TEST(Memory, AFailedCallLeavesTheBlockAlone) {
  void* block = ReallocateZeroed(nullptr, 8);
  std::memset(block, 0x55, 8);
  EXPECT_EQ(ReallocateZeroed(block, std::numeric_limits<size_t>::max()), nullptr);
  EXPECT_EQ(AllocateZeroed(std::numeric_limits<size_t>::max() - 8), nullptr);
  FailAllocation(2);
  void* other = AllocateZeroed(1);
  EXPECT_NE(other, nullptr);
  EXPECT_EQ(ReallocateZeroed(block, 16), nullptr);
  EXPECT_EQ(BlockBytes(block), 8u);
  EXPECT_EQ(static_cast<unsigned char*>(block)[7], 0x55);
  FreeBlock(other);
  FreeBlock(block);
}

TEST(PlatformString, KeepsItsLengthInFront) {
  char16_t* text = AllocateString(u"ab\0cd", 5);
  EXPECT_EQ(StringCharacters(text), 5u);
  uint32_t bytes = 0;
  std::memcpy(&bytes, reinterpret_cast<char*>(text) - 4, 4);
  EXPECT_EQ(bytes, 10u);
  EXPECT_EQ(std::memcmp(text, u"ab\0cd", 12), 0) << "terminated";
  FreeString(text);
  char16_t* empty = AllocateString(nullptr, 0);
  EXPECT_EQ(StringCharacters(empty), 0u);
  EXPECT_EQ(empty[0], 0);
  FreeString(empty);
  FreeString(nullptr);
  EXPECT_EQ(AllocateString(nullptr, std::numeric_limits<uint32_t>::max()), nullptr);
}

TEST(Mapping, ShowsAWholeFile) {
  testing_support::TempFolder folder;
  MappedFile mapping{};
  ASSERT_TRUE(MapFile(folder.Put("A", "content").c_str(), &mapping));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(mapping.data), mapping.bytes), "content");
  UnmapFile(&mapping);
  EXPECT_EQ(mapping.data, nullptr);
  EXPECT_TRUE(MapFile(folder.Put("empty", "").c_str(), &mapping));
  EXPECT_EQ(mapping.data, nullptr);
  EXPECT_EQ(mapping.bytes, 0u);
  UnmapFile(&mapping);
  EXPECT_FALSE(MapFile(folder.Name("missing").c_str(), &mapping));
  EXPECT_FALSE(MapFile(folder.Path().u16string().c_str(), &mapping));
  void* pages = AllocatePages(10'000);
  EXPECT_TRUE(AllZero(pages, 0, 10'000));
  FreePages(pages, 10'000);
  EXPECT_EQ(AllocatePages(std::numeric_limits<size_t>::max() / 2), nullptr);
}

TEST(TryRead, TellsUnreadableMemory) {
  const char text[] = "readable";
  char copy[sizeof text] = {};
  EXPECT_TRUE(TryRead(text, copy, sizeof text));
  EXPECT_STREQ(copy, text);
  EXPECT_FALSE(TryRead(reinterpret_cast<void*>(16), copy, 1));
  EXPECT_FALSE(TryRead(reinterpret_cast<void*>(~uintptr_t{0}), copy, 2));
  EXPECT_TRUE(TryRead(nullptr, copy, 0));
  char* pages = static_cast<char*>(AllocatePages(8192));
  FreePages(pages + 4096, 4096);
  EXPECT_TRUE(TryRead(pages + 4095, copy, 1));
  EXPECT_FALSE(TryRead(pages + 4095, copy, 2)) << "the second byte lies behind the end";
  FreePages(pages, 4096);
}

// ---- Processor -------------------------------------------------------------------------------------

/// Leaves with the bits of a test; everything that isn't set is 0.
struct FakeProcessor {
  CpuidLeaf leaf0{7, 0, 0, 0};
  CpuidLeaf leaf1{};
  CpuidLeaf leaf7{};
  static CpuidLeaf Read(uint32_t leaf, void* context) {
    const FakeProcessor* self = static_cast<FakeProcessor*>(context);
    return leaf == 0 ? self->leaf0 : leaf == 1 ? self->leaf1 : leaf == 7 ? self->leaf7 : CpuidLeaf{};
  }
};

TEST(VectorLevel, FollowsTheLeavesAndTheSystemsState) {
  const CpuidLeaf real = Cpuid(1);
  const uint64_t xState = EnabledXState();
  FakeProcessor fake;
  SetCpuidSource(FakeProcessor::Read, &fake);
  EXPECT_EQ(DetectedVectorLevel(), VectorLevel::kPlain);
  fake.leaf1.edx = 1u << 26;
  SetCpuidSource(FakeProcessor::Read, &fake);
  EXPECT_EQ(DetectedVectorLevel(), VectorLevel::kSse2);
  fake.leaf1.ecx = 1u << 28;  // AVX without the bit that says the system saves its registers.
  fake.leaf7.ebx = 1u << 5;
  SetCpuidSource(FakeProcessor::Read, &fake);
  EXPECT_EQ(EnabledXState(), 0u);
  EXPECT_EQ(DetectedVectorLevel(), VectorLevel::kSse2);
  fake.leaf1.ecx |= 1u << 27;
  SetCpuidSource(FakeProcessor::Read, &fake);
  const bool savesYmm = (real.ecx & 1u << 27) != 0 && (xState & 6) == 6;
  EXPECT_EQ(DetectedVectorLevel(), savesYmm ? VectorLevel::kAvx2 : VectorLevel::kSse2);
  fake.leaf0.eax = 6;
  SetCpuidSource(FakeProcessor::Read, &fake);
  EXPECT_EQ(DetectedVectorLevel(), VectorLevel::kSse2) << "a leaf above the highest doesn't count";
  fake.leaf0.eax = 7;
  fake.leaf7.ebx |= 1u << 16 | 1u << 17 | 1u << 30 | 1u << 31;
  SetCpuidSource(FakeProcessor::Read, &fake);
  const bool savesZmm = savesYmm && (xState & 0xE6) == 0xE6;
  EXPECT_EQ(DetectedVectorLevel(), savesZmm   ? VectorLevel::kAvx512
                                   : savesYmm ? VectorLevel::kAvx2
                                              : VectorLevel::kSse2);
  SetVectorLevelLimit(VectorLevel::kPlain);
  EXPECT_EQ(DetectedVectorLevel(), VectorLevel::kPlain);
  SetVectorLevelLimit(VectorLevel::kAvx512);
  SetCpuidSource(nullptr, nullptr);
  EXPECT_GE(DetectedVectorLevel(), VectorLevel::kSse2);
  EXPECT_GE(ProcessorCount(), 1u);
}

}  // namespace
}  // namespace plat
