// SPDX-License-Identifier: Apache-2.0
// The growable stream: random operations on a stream and its clone against a plain vector; the block's owner.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "marlo110k/platform/stream.h"
#include "platform/base/memory.h"
#include "testing/random.h"

namespace plat {
namespace {

uint64_t StreamBytes(IStream* stream) {
  STATSTG stat;
  EXPECT_EQ(stream->Stat(&stat, 0), S_OK);
  return stat.cbSize;
}

TEST(BlockStream, FollowsAVectorWithTwoPositions) {
  testing_support::Random random(7);
  SCOPED_TRACE(random.Label());
  const int64_t before = LiveBlocks();
  IStream* streams[2] = {};
  ASSERT_EQ(CreateStreamOnBlock(nullptr, 1, &streams[0]), S_OK);
  ASSERT_EQ(streams[0]->Clone(&streams[1]), S_OK);
  std::vector<uint8_t> model;
  uint64_t positions[2] = {};
  for (int step = 0; step < 3'000; ++step) {
    const auto which = static_cast<size_t>(random.Between(0, 1));
    uint64_t& position = positions[which];
    uint8_t bytes[64];
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random.Bits() | 1);
    const auto count = static_cast<uint32_t>(random.Between(0, 64));
    uint32_t moved = 99;
    switch (random.Between(0, 4)) {
      case 0:
        ASSERT_EQ(streams[which]->Write(bytes, count, &moved), S_OK);
        if (count != 0) model.resize(std::max<size_t>(model.size(), position + count));
        std::copy_n(bytes, count, model.begin() + static_cast<ptrdiff_t>(count == 0 ? 0 : position));
        position += count;
        ASSERT_EQ(moved, count);
        break;
      case 1: {
        const uint64_t left = position < model.size() ? model.size() - position : 0;
        ASSERT_EQ(streams[which]->Read(bytes, count, &moved), S_OK);
        ASSERT_EQ(moved, std::min<uint64_t>(count, left));
        if (moved != 0) {
          ASSERT_EQ(std::memcmp(bytes, model.data() + position, moved), 0) << step;
        }
        position += moved;
        break;
      }
      case 2: {
        const int64_t move = random.Between(-600, 600);
        const auto origin = static_cast<uint32_t>(random.Between(0, 3));
        const uint64_t bases[] = {0, position, model.size(), 0};
        const int64_t target = static_cast<int64_t>(bases[origin]) + move;
        uint64_t told = 1;
        const bool valid = origin < 3 && target >= 0;
        ASSERT_EQ(streams[which]->Seek(move, origin, &told), valid ? S_OK : STG_E_INVALIDFUNCTION);
        if (valid) position = static_cast<uint64_t>(target);
        ASSERT_EQ(told, position);
        break;
      }
      case 3: {
        const auto size = static_cast<size_t>(random.Between(0, 500));
        ASSERT_EQ(streams[which]->SetSize(size), S_OK);
        model.resize(size);
        break;
      }
      case 4: {  // The target shares the block and so may move and lengthen it meanwhile.
        uint64_t read = 0;
        uint64_t written = 0;
        const uint64_t left = std::min<uint64_t>(100, position < model.size() ? model.size() - position : 0);
        const std::vector<uint8_t> piece(model.begin() + static_cast<ptrdiff_t>(left == 0 ? 0 : position),
                                         model.begin() + static_cast<ptrdiff_t>(left == 0 ? 0 : position + left));
        ASSERT_EQ(streams[which]->CopyTo(streams[1 - which], 100, &read, &written), S_OK);
        ASSERT_EQ(read, left);
        ASSERT_EQ(written, left);
        uint64_t& other = positions[1 - which];
        if (left != 0) model.resize(std::max<size_t>(model.size(), other + left));
        std::copy(piece.begin(), piece.end(), model.begin() + static_cast<ptrdiff_t>(left == 0 ? 0 : other));
        position += left;
        other += left;
        break;
      }
    }
    ASSERT_EQ(StreamBytes(streams[0]), model.size()) << step;
  }
  EXPECT_EQ(streams[0]->Release(), 0u);
  EXPECT_EQ(StreamBytes(streams[1]), model.size()) << "the clone keeps the block";
  EXPECT_EQ(streams[1]->Release(), 0u);
  EXPECT_EQ(LiveBlocks(), before);
}

TEST(BlockStream, TheBlockGoesWithTheStreamOnlyWhenGiven) {
  const int64_t before = LiveBlocks();
  void* block = AllocateZeroed(3);
  std::memcpy(block, "abc", 3);
  IStream* stream = nullptr;
  ASSERT_EQ(CreateStreamOnBlock(block, 0, &stream), S_OK);
  EXPECT_EQ(StreamBytes(stream), 3u) << "the block's size is the stream's";
  ASSERT_EQ(stream->Seek(0, STREAM_SEEK_END, nullptr), S_OK);
  ASSERT_EQ(stream->Write("defgh", 5, nullptr), S_OK);
  EXPECT_EQ(GetBlockOfStream(stream, &block), S_OK);
  EXPECT_EQ(std::memcmp(block, "abcdefgh", 8), 0);
  EXPECT_EQ(stream->SetSize(1ull << 32), STG_E_MEDIUMFULL);
  FailAllocation(1);
  EXPECT_EQ(stream->SetSize(4'000), E_OUTOFMEMORY);
  EXPECT_EQ(StreamBytes(stream), 8u);
  EXPECT_EQ(stream->Release(), 0u);
  EXPECT_EQ(LiveBlocks(), before + 1);

  for (uint32_t failing = 1; failing <= 2; ++failing) {  // The shared part, then the stream.
    FailAllocation(failing);
    EXPECT_EQ(CreateStreamOnBlock(block, 1, &stream), E_OUTOFMEMORY);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(LiveBlocks(), before + 1) << "a failure leaves the block to its owner";
  }
  FreeBlock(block);
  void* none = nullptr;
  EXPECT_EQ(GetBlockOfStream(nullptr, &none), E_INVALIDARG);
  EXPECT_EQ(CreateStreamOnBlock(nullptr, 1, nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace plat
