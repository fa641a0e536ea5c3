// SPDX-License-Identifier: Apache-2.0
// Corrections of size fields over all ways in which a recording can end early.
#include "size_plan.h"

#include <gmock/gmock.h>

#include "apps/sound_bytes.h"
#include "open_file.h"
#include "testing/random.h"

namespace apps_test {
namespace {

struct Kind {
  const char* name;
  Bytes bytes;        // A sound file that ends with its samples.
  size_t dataOffset;  // Of the samples.
  size_t frameBytes;
  std::vector<size_t> fields;  // Offsets of its size fields, 4 bytes each (8 in Wave64).
};

std::vector<Kind> Kinds() {
  // Samples that look like nothing else, and no tag.
  Bytes samples;
  for (int index = 0; index < 60; ++index) samples.push_back(static_cast<uint8_t>(0x80 + index));
  return {
      {"wave", MakeWave({16}, 48000, 2, samples), 44, 4, {4, 40}},
      {"wave mono 8", MakeWave({8}, 48000, 1, samples), 44, 1, {4, 40}},
      {"wave 24 stereo", MakeWave({24}, 48000, 2, samples), 44, 6, {4, 40}},
      {"extensible", MakeExtensibleWave({16}, 48000, 6, 0x3F, samples), 68, 12, {4, 64}},
      {"wave64", MakeWave64({16}, 48000, 2, samples), 112, 4, {16, 104}},
      {"wave64 24", MakeWave64({24}, 48000, 1, samples), 112, 3, {16, 104}},
      {"aiff", MakeAiff({16, false, true}, 2, samples), 54, 4, {4, 22, 42}},
      {"aifc", MakeAiff({16}, 1, samples, true), 60, 2, {4, 22, 48}},
  };
}

struct Outcome {
  bool found = false;
  size_t changes = 0;
  uint64_t sampleBytes = 0;
  Bytes bytes;
};

// Plans over the bytes and applies the plan.
Outcome Correct(const Bytes& bytes) {
  const host::OpenFile file(plat::OpenMemoryFile(bytes.data(), bytes.size(), bytes.size()));
  Outcome outcome;
  std::string reason;
  const auto layout = host::FindSound(file.Get(), static_cast<int64_t>(bytes.size()), &reason);
  if (!layout) return outcome;
  outcome.found = true;
  const host::SizePlan plan = host::PlanSizes(file.Get(), static_cast<int64_t>(bytes.size()), *layout);
  outcome.changes = plan.changes.size();
  outcome.sampleBytes = plan.sampleBytes;
  host::ApplyPlan(file.Get(), *layout, plan, "memory");
  outcome.bytes.resize(bytes.size());
  uint32_t got = 0;
  plat::SeekFile(file.Get(), 0, plat::kSeekStart, nullptr);
  plat::ReadFile(file.Get(), outcome.bytes.data(), static_cast<uint32_t>(bytes.size()), &got);
  EXPECT_EQ(got, bytes.size());
  return outcome;
}

void ExpectOnlyFieldsChanged(const Bytes& before, const Bytes& after, const Kind& kind) {
  const size_t width = std::string(kind.name).starts_with("wave64") ? 8 : 4;
  ASSERT_EQ(before.size(), after.size());
  for (size_t offset = 0; offset < before.size(); ++offset) {
    const bool field = std::any_of(kind.fields.begin(), kind.fields.end(),
                                   [&](size_t start) { return offset >= start && offset < start + width; });
    if (!field) {
      ASSERT_EQ(before[offset], after[offset]) << "at " << offset;
    }
  }
}

TEST(SizePlan, SoundFilesNeedNothing) {
  for (const Kind& kind : Kinds()) {
    SCOPED_TRACE(kind.name);
    const Outcome outcome = Correct(kind.bytes);
    ASSERT_TRUE(outcome.found);
    EXPECT_EQ(outcome.changes, 0u);
    EXPECT_EQ(outcome.bytes, kind.bytes);
  }
}

// Cut after every byte, with the sizes as the writer meant them, as it began (0) and as a stream states them.
TEST(SizePlan, CutAnywhereCountsWholeFramesAndTouchesNothingElse) {
  for (const Kind& kind : Kinds()) {
    const bool wave64 = std::string(kind.name).starts_with("wave64");
    for (size_t length = kind.dataOffset; length <= kind.bytes.size(); ++length) {
      for (int state = 0; state < 3; ++state) {
        SCOPED_TRACE(std::string(kind.name) + " cut at " + std::to_string(length) + ", state " + std::to_string(state));
        Bytes broken(kind.bytes.begin(), kind.bytes.begin() + static_cast<int64_t>(length));
        for (const size_t field : kind.fields) {
          if (state == 1) wave64 ? Set64(&broken, field, 0) : Set32(&broken, field, 0);
          if (state == 2) wave64 ? Set64(&broken, field, INT64_MAX) : Set32(&broken, field, 0xFFFFFFFF);
        }
        const Outcome outcome = Correct(broken);
        ASSERT_TRUE(outcome.found);
        const size_t end = std::min<size_t>(length, kind.dataOffset + 60);  // Padding isn't samples,
        const size_t whole = (end - kind.dataOffset) / kind.frameBytes * kind.frameBytes;
        if (!wave64 || state == 0) {
          ASSERT_EQ(outcome.sampleBytes, whole);
        } else {
          // but nothing tells it from samples when the sizes are gone.
          ASSERT_GE(outcome.sampleBytes, whole);
          ASSERT_LE(outcome.sampleBytes, length - kind.dataOffset);
        }
        ExpectOnlyFieldsChanged(broken, outcome.bytes, kind);
        // What was put right is right.
        const Outcome again = Correct(outcome.bytes);
        ASSERT_EQ(again.changes, 0u);
        ASSERT_EQ(again.sampleBytes, outcome.sampleBytes);
      }
    }
  }
}

TEST(SizePlan, FieldsOfARepairedFileSayWhatItHolds) {
  Bytes wave = MakeWave({16}, 48000, 2, Bytes(60, 0x91));
  wave.resize(44 + 41);
  Bytes fixed = Correct(wave).bytes;
  EXPECT_EQ(Get32(fixed, 40), 40u);
  EXPECT_EQ(Get32(fixed, 4), 36u + 40);
  Bytes wave64 = MakeWave64({16}, 48000, 2, Bytes(60, 0x91));
  wave64.resize(112 + 41);
  fixed = Correct(wave64).bytes;
  EXPECT_EQ(Get64(fixed, 104), 24u + 40);
  EXPECT_EQ(Get64(fixed, 16), 112u + 40);
  Bytes aiff = MakeAiff({16, false, true}, 2, Bytes(60, 0x91));
  aiff.resize(54 + 41);
  fixed = Correct(aiff).bytes;
  EXPECT_EQ(GetBig32(fixed, 42), 8u + 40);
  EXPECT_EQ(GetBig32(fixed, 22), 10u);
  EXPECT_EQ(GetBig32(fixed, 4), 46u + 40);
}

TEST(SizePlan, ChunksBehindTheSamplesStay) {
  const Bytes sound = MakeWave({16}, 48000, 2, Bytes(60, 0x91));
  Bytes withList = sound;
  AppendChunk(&withList, "LIST", Bytes{'I', 'N', 'F', 'O', 'I', 'N', 'A', 'M', 2, 0, 0, 0, 'h', 'i'});
  EXPECT_EQ(Correct(withList).changes, 0u);

  // The form forgot the chunk: only the form's size changes.
  Bytes forgotten = withList;
  Set32(&forgotten, 4, 36 + 60);
  Outcome outcome = Correct(forgotten);
  EXPECT_EQ(outcome.bytes, withList);

  // The chunk is cut: it is shortened, the samples stay.
  for (size_t cut = 1; cut <= 14; ++cut) {
    Bytes shorter(withList.begin(), withList.end() - static_cast<int64_t>(cut));
    outcome = Correct(shorter);
    EXPECT_EQ(outcome.sampleBytes, 60u) << cut;
    EXPECT_EQ(Get32(outcome.bytes, 40), 60u) << cut;
    EXPECT_EQ(Get32(outcome.bytes, 108), 14 - cut) << cut;
    // A byte of padding more in the form's size is no fault.
    EXPECT_THAT(Get32(outcome.bytes, 4), testing::AnyOf(shorter.size() - 8, shorter.size() - 7)) << cut;
    EXPECT_EQ(Correct(outcome.bytes).changes, 0u) << cut;
  }

  // Rubbish behind a chunk isn't taken for samples, nor is a tag behind the samples.
  Bytes rubbish = withList;
  rubbish.insert(rubbish.end(), 100, 0xEE);
  EXPECT_EQ(Correct(rubbish).changes, 0u);
  Bytes tagged = sound;
  PutText(&tagged, "TAG");
  tagged.resize(sound.size() + 128);
  EXPECT_EQ(Correct(tagged).changes, 0u);
  // Samples behind the counted ones are.
  Bytes longer = sound;
  longer.insert(longer.end(), 40, 0xEE);
  EXPECT_EQ(Correct(longer).sampleBytes, 100u);
}

// Quiet 8-bit samples are printable bytes; as a chunk header they would reach far past the file.
TEST(SizePlan, SamplesThatLookLikeText) {
  Bytes wave = MakeWave({8}, 48000, 1, Bytes(1000, '~'));
  Set32(&wave, 4, 36);
  Set32(&wave, 40, 0);
  EXPECT_EQ(Correct(wave).sampleBytes, 1000u);
}

TEST(SizePlan, RandomDamageToFieldsSettlesInOneStep) {
  testing_support::Random random(99);
  SCOPED_TRACE(random.Label());
  for (const Kind& kind : Kinds()) {
    const bool wave64 = std::string(kind.name).starts_with("wave64");
    for (int round = 0; round < 2000; ++round) {
      Bytes broken = kind.bytes;
      for (const size_t field : kind.fields) {
        if (random.Between(0, 1) == 0) continue;
        const uint64_t value =
            random.Between(0, 1) == 0 ? random.Bits() : static_cast<uint64_t>(random.Between(0, 200));
        wave64 ? Set64(&broken, field, value) : Set32(&broken, field, static_cast<uint32_t>(value));
      }
      const Outcome outcome = Correct(broken);
      if (!outcome.found) continue;
      ASSERT_LE(outcome.sampleBytes, kind.bytes.size() - kind.dataOffset) << kind.name;
      ExpectOnlyFieldsChanged(broken, outcome.bytes, kind);
      ASSERT_EQ(Correct(outcome.bytes).changes, 0u) << kind.name << " round " << round;
    }
  }
}

}  // namespace
}  // namespace apps_test
