// SPDX-License-Identifier: Apache-2.0
// Scratch buffers: one a thread, gone with the thread.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "kernel/startup.h"
#include "kernel/threadbuf.h"
#include "platform/base/memory.h"

namespace {

TEST(ThreadBuffer, OneZeroedBlockAThreadThatEndsWithIt) {
  const int64_t before = plat::LiveBlocks();
  std::vector<std::thread> threads;
  std::atomic<int> ready{0};
  std::atomic<bool> go{false};
  std::vector<void*> blocks(8);
  for (size_t t = 0; t < blocks.size(); ++t) {
    threads.emplace_back([&, t] {
      uint32_t bytes = 0;
      auto* block = static_cast<unsigned char*>(marlo::ThreadBuffer(&bytes));
      blocks[t] = block;
      EXPECT_EQ(0x20000U, bytes);
      EXPECT_TRUE(std::all_of(block, block + bytes, [](unsigned char byte) { return byte == 0; }));
      std::fill(block, block + bytes, static_cast<unsigned char>(t + 1));
      ++ready;
      while (!go.load()) std::this_thread::yield();
      EXPECT_EQ(block, marlo::ThreadBuffer(nullptr)) << "the same block as long as the thread lives";
      EXPECT_EQ(t + 1, block[bytes - 1]);
    });
  }
  while (ready.load() < 8) std::this_thread::yield();
  EXPECT_EQ(before + 8, plat::LiveBlocks());
  go = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(before, plat::LiveBlocks());
  std::sort(blocks.begin(), blocks.end());
  EXPECT_EQ(blocks.end(), std::adjacent_find(blocks.begin(), blocks.end()));
}

TEST(ThreadBuffer, UnloadingFreesBuffersOfThreadsThatLiveOn) {
  std::atomic<int> step{0};
  std::thread thread([&] {
    EXPECT_NE(nullptr, marlo::ThreadBuffer(nullptr));
    step = 1;
    while (step.load() != 2) std::this_thread::yield();
    // The thread ends after its buffer went with the library, and must free nothing twice.
  });
  while (step.load() != 1) std::this_thread::yield();
  marlo::Detach();
  marlo::Attach();
  step = 2;
  thread.join();
}

TEST(ThreadBuffer, ShortMemoryGivesNull) {
  std::thread([] {
    const int64_t before = plat::LiveBlocks();
    plat::FailAllocation(1);
    uint32_t bytes = 1;
    EXPECT_EQ(nullptr, marlo::ThreadBuffer(&bytes));
    EXPECT_EQ(0U, bytes);
    plat::FailAllocation(0);
    EXPECT_EQ(before, plat::LiveBlocks());
    EXPECT_NE(nullptr, marlo::ThreadBuffer(&bytes));
  }).join();
}

}  // namespace
