// SPDX-License-Identifier: Apache-2.0
// Walks over hostile chunks end, in bounded memory, with what was found so far.
#include "chunk_tree.h"

#include <gtest/gtest.h>

#include "apps/sound_bytes.h"
#include "open_file.h"
#include "sound_layout.h"
#include "testing/random.h"

namespace apps_test {
namespace {

struct Walked {
  host::ChunkTree tree;
  std::optional<host::SoundLayout> layout;
};

Walked Walk(const Bytes& bytes) {
  const host::OpenFile file(plat::OpenMemoryFile(bytes.data(), bytes.size(), bytes.size()));
  Walked walked;
  if (const auto form = host::ReadFormHeader(file.Get())) {
    walked.tree = host::ReadChunkTree(file.Get(), *form, static_cast<int64_t>(bytes.size()));
  }
  std::string reason;
  walked.layout = host::FindSound(file.Get(), static_cast<int64_t>(bytes.size()), &reason);
  EXPECT_NE(walked.layout.has_value(), !reason.empty());
  return walked;
}

TEST(ChunkTree, MillionChunksAreCutShort) {
  Bytes bytes = MakeWave({16}, 48000, 1, {});
  for (int index = 0; index < 1'000'000; ++index) {
    PutText(&bytes, "JUNK");
    Put32(&bytes, 0);
  }
  Set32(&bytes, 4, static_cast<uint32_t>(bytes.size() - 8));
  const Walked walked = Walk(bytes);
  EXPECT_FALSE(walked.tree.complete);
  EXPECT_LE(walked.tree.chunks.size(), 100'000u);
  EXPECT_TRUE(walked.layout);
}

TEST(ChunkTree, ListsInListsInLists) {
  Bytes bytes = MakeWave({16}, 48000, 1, {});
  for (int depth = 0; depth < 50'000; ++depth) {
    PutText(&bytes, "LIST");
    Put32(&bytes, 0x7FFFFFFF);
    PutText(&bytes, "abcd");
  }
  Set32(&bytes, 4, 0xFFFFFFFF);
  const Walked walked = Walk(bytes);
  ASSERT_EQ(walked.tree.chunks.size(), 3u);
  EXPECT_EQ(walked.tree.chunks[2].children.size(), 1u);
  EXPECT_FALSE(walked.tree.problems.empty());
}

// Files cut anywhere, and with bytes changed anywhere: no crash, and positions within the file.
TEST(ChunkTree, DamageAnywhere) {
  testing_support::Random random(5);
  SCOPED_TRACE(random.Label());
  Bytes wave = MakeExtensibleWave({16}, 48000, 2, 3, Bytes(64, 0x55));
  AppendChunk(&wave, "LIST", Bytes{'a', 'd', 't', 'l', 'l', 'a', 'b', 'l', 4, 0, 0, 0, 1, 2, 3, 4});
  for (const Bytes& sound : {wave, MakeWave64({24}, 48000, 3, Bytes(90)), MakeAiff({16, false, true}, 2, Bytes(64)),
                             MakeAiff({16}, 2, Bytes(64), true)}) {
    for (size_t length = 0; length <= sound.size(); ++length)
      Walk(Bytes(sound.begin(), sound.begin() + static_cast<int64_t>(length)));
    for (int round = 0; round < 5000; ++round) {
      Bytes damaged = sound;
      for (int count = 0; count < 3; ++count) {
        const auto place = static_cast<size_t>(random.Between(0, static_cast<int64_t>(sound.size()) - 1));
        damaged[place] = static_cast<uint8_t>(random.Between(0, 3) == 0 ? 0xFF : random.Bits());
      }
      const Walked walked = Walk(damaged);
      if (walked.layout) {
        EXPECT_LE(walked.layout->sampleOffset, static_cast<int64_t>(damaged.size()));
        EXPECT_GT(walked.layout->frameBytes, 0u);
      }
    }
  }
}

}  // namespace
}  // namespace apps_test
