// SPDX-License-Identifier: Apache-2.0
// Searches and counts in RIFF files: bounds to the byte, against a model, and the file family against the memory
// family.
#include <gtest/gtest.h>

#include <algorithm>

#include "marlo110k/mriff.h"
#include "marlo110k/riff.h"
#include "media/testing/image.h"
#include "testing/random.h"

using namespace media_testing;

namespace {

constexpr uint32_t kNone = ZrChunkId("none");
constexpr uint32_t kB = ZrChunkId("bbbb");

/// "aaaa" with 3 data bytes at 0, "bbbb" with 5 at 12, "cccc" with none at 26; 34 bytes.
Image ThreeChunks() { return Image().Chunk("aaaa", Image().Ramp(3)).Chunk("bbbb", Image().Ramp(5)).Chunk("cccc", {}); }

TEST(RiffFindChunk, BoundsCountToTheByte) {
  struct Row {
    const char* name;
    uint32_t bound;
    uint32_t id;
    HRESULT result;
    uint32_t left;
    uint64_t position;
  };
  const Row rows[] = {
      {"7 reads nothing", 7, kB, ZR_E_NOT_FOUND, 7, 0},
      {"8 reads a header", 8, kB, ZR_E_NOT_FOUND, 0, 12},
      {"the found chunk's data isn't taken off", 8, ZrChunkId("aaaa"), S_OK, 0, 8},
      {"10 ends in the data of the first", 10, kB, ZR_E_NOT_FOUND, 0, 12},
      {"19 is one short", 19, kB, ZR_E_NOT_FOUND, 7, 12},
      {"20 reaches the second", 20, kB, S_OK, 0, 20},
      {"34 passes all", 34, kNone, ZR_E_NOT_FOUND, 0, 34},
      {"41 leaves 7", 41, kNone, ZR_E_NOT_FOUND, 7, 34},
      {"42 runs into the end; the bound stays", 42, kNone, ZR_E_FILE_READ, 42, 34},
  };
  for (const Row& row : rows) {
    const MemoryFile file(ThreeChunks());
    uint32_t bound = row.bound;
    uint32_t size = 77;
    EXPECT_EQ(riff_FindChunkHeader(file, row.id, &size, &bound), row.result) << row.name;
    EXPECT_EQ(bound, row.left) << row.name;
    EXPECT_EQ(file.Position(), row.position) << row.name;
    EXPECT_EQ(size, FAILED(row.result) ? 77u : row.id == kB ? 5u : 3u) << row.name;
  }
}

TEST(RiffFindChunk, WithoutABoundOnlyTheEndOfTheFileStopsIt) {
  const MemoryFile file(ThreeChunks());
  EXPECT_EQ(riff_FindChunkHeader(file, ZrChunkId("cccc"), nullptr, nullptr), S_OK);
  EXPECT_EQ(file.Position(), 34u);
  file.MoveTo(0);
  EXPECT_EQ(riff_FindChunkHeader(file, kNone, nullptr, nullptr), ZR_E_FILE_READ);
}

TEST(RiffFindChunk, WildSizesEndTheSearch) {
  for (const uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    const MemoryFile file(Image().Text("wild").U32(size).Chunk("bbbb", {}));
    uint32_t bound = 16;
    EXPECT_EQ(riff_FindChunkHeader(file, kB, nullptr, &bound), ZR_E_NOT_FOUND) << size;
    EXPECT_EQ(bound, 0u) << "held at 0";
    file.MoveTo(0);
    EXPECT_EQ(riff_FindChunkHeader(file, kB, nullptr, nullptr), ZR_E_FILE_READ) << size;
    file.MoveTo(0);
    uint32_t count = 77;
    EXPECT_EQ(riff_GetNumListEntries(file, &count, nullptr), ZR_E_FILE_READ);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(file.Position(), 0u);
  }
}

TEST(RiffFindInRiff, CountsFromTheHeader) {
  const Image image = Image().Text("RIFF").U32(4 + 34).Text("TEST").Add(ThreeChunks()).Chunk("tail", {});
  const MemoryFile file(image);
  file.MoveTo(20);
  uint32_t bound = 3;  // Ignored.
  uint32_t size = 0;
  EXPECT_EQ(riff_FindChunkHeaderInRIFF(file, kB, &size, &bound), S_OK);
  EXPECT_EQ(size, 5u);
  EXPECT_EQ(bound, 34u - 20u);
  EXPECT_EQ(file.Position(), 32u);
  EXPECT_EQ(riff_FindChunkHeaderInRIFF(file, ZrChunkId("tail"), &size, &bound), ZR_E_NOT_FOUND)
      << "behind what the RIFF counts";
  EXPECT_EQ(bound, 0u);
  const MemoryFile other(Image().Text("RIFX").Fill(20));
  EXPECT_EQ(riff_FindChunkHeaderInRIFF(other, kB, &size, &bound), ZR_E_NO_RIFF_HEADER);
}

/// A list of another type, one too short for a type, a chunk, then the wanted list with two entries.
Image Lists() {
  Image wanted;
  wanted.Text("INFO").Chunk("INAM", Image().Text("abc")).Chunk("ICMT", Image().Text("de"));
  return Image()
      .Chunk("LIST", Image().Text("adtl").Ramp(3))
      .Chunk("LIST", Image().Text("x"))
      .Chunk("JUNK", Image().Ramp(6))
      .Chunk("LIST", {})
      .Chunk("LIST", wanted);
}

TEST(RiffFindList, SkipsOtherTypes) {
  // 8 + 8, 8 + 2, 8 + 6, 8: the wanted list stands at 48, its entries at 60, and they take 12 + 10 bytes.
  const MemoryFile file(Lists());
  uint32_t size = 0;
  uint32_t bound = 82;
  EXPECT_EQ(riff_FindListChunk(file, ZrChunkId("INFO"), &size, &bound), S_OK);
  EXPECT_EQ(size, 22u);
  EXPECT_EQ(bound, 22u);
  EXPECT_EQ(file.Position(), 60u);
  uint32_t count = 0;
  EXPECT_EQ(riff_GetNumListEntries(file, &count, &bound), S_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(bound, 0u);
  EXPECT_EQ(file.Position(), 60u);

  file.MoveTo(0);
  EXPECT_EQ(riff_FindListChunk(file, ZrChunkId("INFO"), nullptr, nullptr), S_OK);
  EXPECT_EQ(file.Position(), 60u);
  file.MoveTo(0);
  EXPECT_EQ(riff_FindListChunk(file, ZrChunkId("adt2"), nullptr, nullptr), ZR_E_FILE_READ);
  file.MoveTo(0);
  bound = 82;
  EXPECT_EQ(riff_FindListChunk(file, ZrChunkId("adt2"), nullptr, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(bound, 0u);
  file.MoveTo(48);
  bound = 11;  // 3 are left at the type.
  EXPECT_EQ(riff_FindListChunk(file, ZrChunkId("INFO"), nullptr, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(bound, 3u);
  EXPECT_EQ(file.Position(), 56u);
  file.MoveTo(48);
  bound = 12;
  EXPECT_EQ(riff_FindListChunk(file, ZrChunkId("INFO"), nullptr, &bound), S_OK);
  EXPECT_EQ(bound, 0u);
}

TEST(RiffFindList, FromTheStartIsBoundedByTheRiff) {
  const Image lists = Lists();
  const auto size = static_cast<uint32_t>(lists.Size());
  uint32_t found = 0;
  const MemoryFile whole(Image().Text("RIFF").U32(size + 4).Text("TEST").Add(lists));
  whole.MoveTo(33);
  EXPECT_EQ(riff_FindListChunkFromStart(whole, ZrChunkId("INFO"), &found), S_OK);
  EXPECT_EQ(found, 22u);
  const MemoryFile cut(Image().Text("RIFF").U32(4 + 48).Text("TEST").Add(lists));
  EXPECT_EQ(riff_FindListChunkFromStart(cut, ZrChunkId("INFO"), &found), ZR_E_NOT_FOUND);
}

TEST(RiffSeekEntry, StopsAtTheIndexOrTheBound) {
  struct Row {
    uint32_t index;
    uint32_t bound;
    HRESULT result;
    uint64_t position;
    uint32_t left;
  };
  const Row rows[] = {
      {0, 0, S_OK, 0, 0},   {1, 7, ZR_E_NOT_FOUND, 0, 7},   {1, 12, S_OK, 12, 0},           {2, 34, S_OK, 26, 8},
      {3, 34, S_OK, 34, 0}, {4, 34, ZR_E_NOT_FOUND, 34, 0}, {4, 99, ZR_E_FILE_READ, 34, 65}};
  for (const Row& row : rows) {
    const MemoryFile file(ThreeChunks());
    uint32_t bound = row.bound;
    EXPECT_EQ(riff_SeekListEntry(file, row.index, &bound), row.result) << row.index << " in " << row.bound;
    EXPECT_EQ(file.Position(), row.position) << row.index << " in " << row.bound;
    EXPECT_EQ(bound, row.left) << row.index << " in " << row.bound;
  }
  const MemoryFile file(ThreeChunks());
  EXPECT_EQ(riff_SeekListEntry(file, 2, nullptr), S_OK);
  EXPECT_EQ(riff_SeekListEntry(file, 2, nullptr), ZR_E_FILE_READ);
}

/// What a search must give, by the plain reading of the rules over the list of chunks.
struct Expected {
  HRESULT result;
  uint32_t bound;
  size_t position;
};

TEST(RiffSearches, AgreeWithAModelAndInBothFamilies) {
  testing_support::Random random(31);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 400; ++round) {
    Image image;
    std::vector<size_t> starts;
    std::vector<std::string> ids;
    const auto chunks = random.Between(0, 12);
    for (int64_t i = 0; i < chunks; ++i) {
      starts.push_back(image.Size());
      ids.push_back({'a', 'a', 'a', static_cast<char>('a' + random.Between(0, 3))});
      image.Chunk(ids.back().c_str(), Image().Ramp(static_cast<size_t>(random.Between(0, 9))));
    }
    const std::string wanted = {'a', 'a', 'a', static_cast<char>('a' + random.Between(0, 4))};
    uint32_t id = 0;
    std::memcpy(&id, wanted.data(), 4);
    const auto bound = static_cast<uint32_t>(random.Between(0, static_cast<int64_t>(image.Size())));

    // The first chunk with the id whose header lies within the bound.
    Expected expected = {ZR_E_NOT_FOUND, 0, 0};
    uint32_t left = bound;
    for (size_t i = 0; i <= starts.size(); ++i) {
      const size_t start = i < starts.size() ? starts[i] : image.Size();
      left = start < bound ? static_cast<uint32_t>(bound - start) : 0;
      expected = {ZR_E_NOT_FOUND, left, start};
      if (left < 8) break;
      if (ids[i] == wanted) {
        expected = {S_OK, left - 8, start + 8};
        break;
      }
    }
    const MemoryFile file(image);
    uint32_t got = bound;
    EXPECT_EQ(riff_FindChunkHeader(file, id, nullptr, &got), expected.result);
    EXPECT_EQ(got, expected.bound);
    EXPECT_EQ(file.Position(), expected.position);

    std::vector<uint8_t> block(image.Bytes());
    block.push_back(0);
    _tMRIFF cursor;
    ASSERT_EQ(
        mriff_Init(&cursor, block.data(), static_cast<uint32_t>(image.Size()), static_cast<uint32_t>(block.size())),
        S_OK);
    got = bound;
    EXPECT_EQ(mriff_FindChunkHeader(&cursor, id, nullptr, &got), expected.result);
    EXPECT_EQ(got, expected.bound);
    EXPECT_EQ(static_cast<size_t>(cursor.current - cursor.base), expected.position);
  }
}

TEST(RiffSearches, TakeAMillionChunks) {
  constexpr uint32_t kChunks = 1000000;
  Image image;
  image.Text("RIFF").U32(4 + 8 * kChunks + 8).Text("TEST");
  for (uint32_t i = 0; i < kChunks; ++i) image.Text("many").U32(0);
  image.Text("last").U32(0);
  const MemoryFile file(image);
  uint32_t bound = 0;
  EXPECT_EQ(riff_FindChunkHeaderInRIFF(file, ZrChunkId("last"), nullptr, &bound), S_OK);
  EXPECT_EQ(bound, 0u);
  file.MoveTo(12);
  uint32_t count = 0;
  bound = 8 * kChunks + 8;
  EXPECT_EQ(riff_GetNumListEntries(file, &count, &bound), S_OK);
  EXPECT_EQ(count, kChunks + 1);
}

}  // namespace
