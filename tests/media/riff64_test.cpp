// SPDX-License-Identifier: Apache-2.0
// Wave64 chunks: the bytes of the framing, sizes at the limits, searches, removal, and files above 4 GiB.
#include "marlo110k/riff64.h"

#include <gtest/gtest.h>

#include "media/testing/image.h"
#include "platform/base/memory.h"

using namespace media_testing;

namespace {

const GUID* AsGuid(const Image& label) {
  static GUID guids[4];
  static int next = 0;
  GUID* guid = &guids[next++ % 4];
  std::memcpy(guid, label.Data(), sizeof *guid);
  return guid;
}

TEST(Riff64Labels, AreTheseBytes) {
  const struct {
    const GUID* label;
    Image bytes;
  } rows[] = {{&kZrLabelRiff, RiffLabel()},        {&kZrLabelList, ListLabel()},
              {&kZrLabelWave, AudioLabel("wave")}, {&kZrLabelFmt, AudioLabel("fmt ")},
              {&kZrLabelData, AudioLabel("data")}, {&kZrLabelJunk, JunkLabel()},
              {&kZrLabelBext, AudioLabel("bext")}, {&kZrLabelDisplay, DisplayLabel()}};
  for (const auto& row : rows) EXPECT_EQ(std::memcmp(row.label, row.bytes.Data(), 16), 0) << row.bytes.Data();
}

TEST(Riff64Write, CountsThePaddingInOneWayOnly) {
  const MemoryFile file;
  uint64_t total = 0;
  EXPECT_EQ(riff64_WriteChunk(file, &kZrLabelData, "a", 1, &total), S_OK);
  EXPECT_EQ(total, 32u);
  EXPECT_EQ(riff64_WriteChunkToFile(file, &kZrLabelData, "b", 1), S_OK);
  EXPECT_EQ(riff64_WriteChunk(file, &kZrLabelJunk, nullptr, 0, &total), S_OK);
  EXPECT_EQ(total, 24u);
  EXPECT_EQ(riff64_WriteFileID(file, &kZrLabelWave, 88), S_OK);
  EXPECT_EQ(riff64_WriteListHeader(file, &kZrLabelWave, 16), S_OK);
  EXPECT_EQ(riff64_WriteData(file, "12345678", 8, &total), S_OK);
  EXPECT_EQ(total, 8u);
  EXPECT_EQ(riff64_WriteData(file, "123", 3, &total), S_OK);
  EXPECT_EQ(total, 8u);
  EXPECT_EQ(riff64_WriteToFile(file, "xyz", 3), S_OK);

  Image expected;
  expected.Add(AudioLabel("data")).U64(25).Text("a").Fill(7);
  expected.Add(AudioLabel("data")).U64(32).Text("b").Fill(7);
  expected.Add(JunkLabel()).U64(24);
  expected.Add(RiffLabel()).U64(112).Add(AudioLabel("wave"));
  expected.Add(ListLabel()).U64(40).Add(AudioLabel("wave"));
  expected.Text("12345678").Text("123").Fill(5).Text("xyz");
  EXPECT_EQ(file.Bytes(), expected.Bytes());
}

TEST(Riff64Prepare, ListsNestAndClose) {
  const MemoryFile file(Image().Fill(3));  // Alignment counts from the chunk's start, not from the file's.
  file.MoveTo(3);
  uint64_t list = 0, chunk = 0;
  EXPECT_EQ(riff64_PrepareList(file, &kZrLabelWave, &list), S_OK);
  EXPECT_EQ(list, 3u);
  EXPECT_EQ(riff64_PrepareChunk(file, &kZrLabelData, &chunk), S_OK);
  EXPECT_EQ(chunk, 43u);
  EXPECT_EQ(riff64_WriteToFile(file, "abcde", 5), S_OK);
  EXPECT_EQ(riff64_AmountWritten(file, chunk), 29);
  EXPECT_EQ(riff64_CompleteChunk(file, chunk), S_OK);
  EXPECT_EQ(riff64_CompleteChunk(file, list), S_OK);
  EXPECT_EQ(file.Position(), file.Length());
  Image expected;
  expected.Fill(3)
      .Add(ListLabel())
      .U64(72)
      .Add(AudioLabel("wave"))
      .Add(AudioLabel("data"))
      .U64(32)
      .Text("abcde")
      .Fill(3);
  EXPECT_EQ(file.Bytes(), expected.Bytes());

  const MemoryFile full({}, 30);
  EXPECT_EQ(riff64_PrepareList(full, &kZrLabelWave, &list), ZR_E_FILE_WRITE);
  EXPECT_EQ(riff64_PrepareList(nullptr, &kZrLabelWave, &list), ZR_E_FILE_WRITE) << "whatever failed";
  EXPECT_EQ(riff64_AmountWritten(nullptr, 5), 0);
}

TEST(Riff64Validate, TestsTheMaskBeforeTheEmptySize) {
  EXPECT_EQ(riff64_ValidateChunkHeader(nullptr, 8), S_OK);
  EXPECT_EQ(riff64_ValidateChunkHeader(nullptr, 0), ZR_E_EMPTY_CHUNK);
  for (const uint64_t size : {1ull, 4ull, 7ull, 9ull, 0x800000000ull, 0x800000008ull}) {
    EXPECT_EQ(riff64_ValidateChunkHeader(nullptr, size), ZR_E_BAD_STREAM) << size;
  }
  EXPECT_EQ(riff64_ValidateChunkHeader(nullptr, 0x8000000000000000), S_OK) << "bit 35 is refused, bit 63 isn't";
}

TEST(Riff64ReadHeader, ClampsFieldsBelowTheHeader) {
  struct Row {
    uint64_t field;
    uint64_t size;
  };
  const Row rows[] = {
      {0, 0},         {23, 0}, {24, 0}, {25, 1}, {0x7FFFFFFFFFFFFFFF, 0x7FFFFFFFFFFFFFE7}, {0x8000000000000000, 0},
      {UINT64_MAX, 0}};
  for (const Row& row : rows) {
    const MemoryFile file(Image().Add(AudioLabel("data")).U64(row.field));
    GUID label;
    uint64_t size = 77;
    EXPECT_EQ(riff64_ReadChunkHeader(file, &label, &size), S_OK);
    EXPECT_EQ(size, row.size) << row.field;
    EXPECT_EQ(label, kZrLabelData);
  }
}

TEST(Riff64ReadFileId, TakesAShortHeaderForAnotherLabel) {
  const Image whole = Image().Add(RiffLabel()).U64(100).Add(AudioLabel("wave"));
  for (size_t length = 0; length <= whole.Size(); ++length) {
    const MemoryFile file(Image().Raw(whole.Data(), length));
    uint64_t size = 77;
    GUID form = kZrLabelJunk;
    const HRESULT expected = length < 24 ? ZR_E_NO_RIFF_HEADER : length < 40 ? ZR_E_FILE_READ : S_OK;
    EXPECT_EQ(riff64_ReadFileID(file, &size, &form), expected) << length;
    EXPECT_EQ(size, length < 40 ? 77u : 60u) << "not cleared";
    EXPECT_EQ(form, length < 40 ? kZrLabelJunk : kZrLabelWave);
  }
  const MemoryFile other(Image().Add(ListLabel()).U64(100).Add(AudioLabel("wave")));
  EXPECT_EQ(riff64_ReadFileID(other, nullptr, nullptr), ZR_E_NO_RIFF_HEADER);
  GUID type;
  uint64_t size = 0;
  other.MoveTo(0);
  EXPECT_EQ(riff64_ReadListHeader(other, &type, &size), S_OK);
  EXPECT_EQ(size, 60u);
  const MemoryFile riff(whole);
  EXPECT_EQ(riff64_ReadListHeader(riff, &type, &size), ZR_E_NO_LIST_HEADER);
}

TEST(Riff64Data, PadsToEight) {
  for (uint32_t count = 0; count <= 17; ++count) {
    const MemoryFile file(Image().Ramp(32));
    uint8_t buffer[32] = {};
    EXPECT_EQ(riff64_ReadData(file, buffer, count), S_OK);
    EXPECT_EQ(file.Position(), (count + 7) / 8 * 8) << count;
    file.MoveTo(0);
    EXPECT_EQ(riff64_ReadDataBounded(file, buffer, 5, count), S_OK);
    EXPECT_EQ(file.Position(), (count + 7) / 8 * 8) << count;
    file.MoveTo(1);
    EXPECT_EQ(riff64_SkipChunk(file, count), (count + 7) / 8 * 8);
    EXPECT_EQ(file.Position(), 1 + (count + 7) / 8 * 8);
  }
  const MemoryFile file(Image().Ramp(32));
  EXPECT_EQ(riff64_SkipChunk(file, UINT64_MAX), 0x7FFFFFFFFFFFFFF8u);
  file.MoveTo(30);
  uint8_t buffer[4];
  EXPECT_EQ(riff64_ReadData(file, buffer, 3), ZR_E_FILE_READ);
  const int64_t blocks = plat::LiveBlocks();
  tZRCHUNKDATA chunk = {5, nullptr};
  file.MoveTo(0);
  ASSERT_EQ(riff64_ReadDataAlloc(file, &chunk), S_OK);
  EXPECT_EQ(file.Position(), 8u);
  plat::FreeBlock(chunk.data);
  EXPECT_EQ(plat::LiveBlocks(), blocks);
}

/// data with 5 bytes at 0, junk at 32, fmt at 56; 80 bytes.
Image ThreeChunks() {
  Image chunks;
  chunks.Add(Chunk64(AudioLabel("data"), Image().Ramp(5))).Add(Chunk64(JunkLabel(), {}));
  return chunks.Add(Chunk64(AudioLabel("fmt "), {}));
}

TEST(Riff64Find, BoundsAreSigned) {
  struct Row {
    const char* name;
    int64_t bound;
    HRESULT result;
    int64_t left;
    uint64_t position;
  };
  const Row rows[] = {
      {"23 reads nothing", 23, ZR_E_NOT_FOUND, 23, 0},
      {"24 reads one header and goes negative", 24, ZR_E_NOT_FOUND, -8, 32},
      {"55", 55, ZR_E_NOT_FOUND, 23, 32},
      {"79 is one short", 79, ZR_E_NOT_FOUND, 23, 56},
      {"80", 80, S_OK, 0, 80},
      {"negative", -1, ZR_E_NOT_FOUND, -1, 0},
      {"lowest", INT64_MIN, ZR_E_NOT_FOUND, INT64_MIN, 0},
      {"highest", INT64_MAX, S_OK, INT64_MAX - 80, 80},
  };
  for (const Row& row : rows) {
    const MemoryFile file(ThreeChunks());
    int64_t bound = row.bound;
    EXPECT_EQ(riff64_FindChunkHeader(file, &kZrLabelFmt, nullptr, &bound), row.result) << row.name;
    EXPECT_EQ(bound, row.left) << row.name;
    EXPECT_EQ(file.Position(), row.position) << row.name;
  }
  const MemoryFile file(ThreeChunks());
  uint64_t size = 0;
  EXPECT_EQ(riff64_FindChunkHeader(file, AsGuid(AudioLabel("junk")), nullptr, nullptr), ZR_E_FILE_READ)
      << "junk with the bytes of its neighbours isn't junk";
  file.MoveTo(0);
  EXPECT_EQ(riff64_FindChunkHeader(file, &kZrLabelData, &size, nullptr), S_OK);
  EXPECT_EQ(size, 5u);
  EXPECT_EQ(riff64_FindChunkHeader(file, nullptr, &size, nullptr), E_INVALIDARG);
}

TEST(Riff64Find, GoesOnBehindAFieldThatIsTooSmallAndEndsAtOneTooLarge) {
  Image image;
  image.Add(AudioLabel("bext")).U64(3).Add(AudioLabel("bext")).U64(0x8000000000000000);
  image.Add(Chunk64(AudioLabel("fmt "), {}));
  const MemoryFile file(image);
  EXPECT_EQ(riff64_FindChunkHeader(file, &kZrLabelFmt, nullptr, nullptr), S_OK);
  EXPECT_EQ(file.Position(), 72u);
  for (const uint64_t field : {0x7FFFFFFFFFFFFFFFull, 0x7FFFFFFFFFFFFFF0ull, 0x100000000ull}) {
    const MemoryFile wild(Image().Add(AudioLabel("bext")).U64(field).Add(Chunk64(AudioLabel("fmt "), {})));
    EXPECT_EQ(riff64_FindChunkHeader(wild, &kZrLabelFmt, nullptr, nullptr), ZR_E_FILE_READ);
    wild.MoveTo(0);
    int64_t bound = 48;
    EXPECT_EQ(riff64_FindChunkHeader(wild, &kZrLabelFmt, nullptr, &bound), ZR_E_NOT_FOUND);
    EXPECT_LT(bound, 24);
    wild.MoveTo(0);
    bound = INT64_MAX;
    EXPECT_EQ(riff64_FindChunkHeader(wild, &kZrLabelFmt, nullptr, &bound),
              field > 0x7000000000000000 ? ZR_E_NOT_FOUND : ZR_E_FILE_READ);
    wild.MoveTo(7);
    uint32_t count = 77;
    EXPECT_EQ(riff64_GetNumListEntries(wild, &count, nullptr), ZR_E_FILE_READ);
    EXPECT_EQ(wild.Position(), 7u);
  }
}

TEST(Riff64Lists, AreFoundCountedAndStepped) {
  Image wanted;
  wanted.Add(AudioLabel("wave")).Add(ThreeChunks());
  Image other;
  other.Add(AudioLabel("fmt ")).Ramp(3);
  Image chunks;
  chunks.Add(Chunk64(ListLabel(), other)).Add(Chunk64(ListLabel(), Image().Ramp(3))).Add(Chunk64(ListLabel(), wanted));
  // 24 + 24, 24 + 8, 24 + 96: 200 bytes; the entries start at 120.
  const Image image = Image().Add(RiffLabel()).U64(40 + 200).Add(AudioLabel("wave")).Add(chunks);
  const MemoryFile file(image);
  uint64_t size = 0;
  EXPECT_EQ(riff64_FindListChunkFromStart(file, &kZrLabelWave, &size), S_OK);
  EXPECT_EQ(size, 80u);
  EXPECT_EQ(file.Position(), 160u);
  file.MoveTo(40);
  int64_t bound = 200;
  EXPECT_EQ(riff64_FindListChunk(file, &kZrLabelWave, &size, &bound), S_OK);
  EXPECT_EQ(bound, 80);
  uint32_t count = 0;
  EXPECT_EQ(riff64_GetNumListEntries(file, &count, &bound), S_OK);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(bound, 0);
  EXPECT_EQ(file.Position(), 160u);
  bound = 79;
  EXPECT_EQ(riff64_SeekListEntry(file, 3, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(bound, 23);
  file.MoveTo(160);
  EXPECT_EQ(riff64_SeekListEntry(file, 2, nullptr), S_OK);
  EXPECT_EQ(file.Position(), 216u);
  EXPECT_EQ(riff64_SeekListEntry(file, 0, nullptr), S_OK);
  EXPECT_EQ(file.Position(), 216u);
  file.MoveTo(120);
  bound = 24 + 7;
  EXPECT_EQ(riff64_FindListChunk(file, &kZrLabelWave, nullptr, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(file.Position(), 144u) << "the type isn't read";
  file.MoveTo(120);
  bound = 24 + 8;
  EXPECT_EQ(riff64_FindListChunk(file, &kZrLabelWave, nullptr, &bound), S_OK) << "8, though a type has 16";
  EXPECT_EQ(bound, -8);
}

TEST(Riff64InRiff, StoresTheFinalBound) {
  const MemoryFile file(Image().Add(RiffLabel()).U64(40 + 56).Add(AudioLabel("wave")).Add(ThreeChunks()));
  int64_t bound = 1;
  uint64_t size = 0;
  EXPECT_EQ(riff64_FindChunkHeaderInRIFF(file, &kZrLabelJunk, &size, &bound), S_OK);
  EXPECT_EQ(bound, 0);
  EXPECT_EQ(file.Position(), 96u);
  EXPECT_EQ(riff64_FindChunkHeaderInRIFF(file, &kZrLabelFmt, &size, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(bound, 0);
}

TEST(Riff64Delete, MovesTheTail) {
  for (const size_t size : {0u, 1u, 8u, 4072u, 5000u}) {
    for (const size_t tail : {0u, 8u, 4096u, 9001u}) {
      Image chunks;
      chunks.Add(Chunk64(AudioLabel("fmt "), Image().Ramp(18)));
      const Image removed = Chunk64(AudioLabel("bext"), Image().Ramp(size));
      const Image rest = Image().Add(Chunk64(AudioLabel("data"), Image().Ramp(tail, 9)));
      const auto file64 = [](const Image& a, const Image& b, const Image& c) {
        return Image()
            .Add(RiffLabel())
            .U64(40 + a.Size() + b.Size() + c.Size())
            .Add(AudioLabel("wave"))
            .Add(a)
            .Add(b)
            .Add(c);
      };
      const MemoryFile file(file64(chunks, removed, rest));
      uint64_t bytes = 0;
      EXPECT_EQ(riff64_DeleteChunk(file, &kZrLabelBext, &bytes), S_OK);
      EXPECT_EQ(bytes, removed.Size());
      EXPECT_EQ(file.Bytes(), file64(chunks, {}, rest).Bytes());
      const MemoryFile last(file64(chunks, rest, removed));
      EXPECT_EQ(riff64_DeleteChunk(last, &kZrLabelBext, nullptr), S_OK);
      EXPECT_EQ(last.Bytes(), file64(chunks, rest, {}).Bytes());
      EXPECT_EQ(riff64_DeleteChunk(last, &kZrLabelBext, nullptr), ZR_E_NOT_FOUND);
    }
  }
  const MemoryFile file(Image().Add(RiffLabel()).U64(120).Add(AudioLabel("wave")).Add(ThreeChunks()));
  plat::FailAllocation(1);
  EXPECT_EQ(riff64_DeleteChunk(file, &kZrLabelData, nullptr), E_OUTOFMEMORY);
  plat::FailAllocation(0);
  EXPECT_EQ(file.Length(), 120u);
}

TEST(Riff64Size, HasNoUpperLimit) {
  const MemoryFile file(Image().Add(RiffLabel()).U64(0xFFFFFFFF).Fill(16));
  file.MoveTo(5);
  EXPECT_EQ(riff64_UpdateRIFFSize(file, 0x100000000), S_OK);
  EXPECT_EQ(file.Bytes(), Image().Add(RiffLabel()).U64(0x1FFFFFFFF).Fill(16).Bytes());
  EXPECT_EQ(riff64_UpdateRIFFSize(file, -0x1FFFFFFFE), S_OK);
  EXPECT_EQ(file.Bytes(), Image().Add(RiffLabel()).U64(1).Fill(16).Bytes());
  EXPECT_EQ(riff64_SetRIFFSize(file, 0x123456789A), S_OK);
  EXPECT_EQ(file.Bytes(), Image().Add(RiffLabel()).U64(0x123456789A + 24).Fill(16).Bytes());
  EXPECT_EQ(file.Position(), 5u);
}

TEST(Riff64, WorksAboveFourGibibytes) {
  // Sparse: the data of the first chunk is never written.
  constexpr uint64_t kDataBytes = 0x140000003;
  const DiskFile disk;
  plat::File* file = disk.Open();
  uint64_t start = 0;
  ASSERT_EQ(riff64_WriteFileID(file, &kZrLabelWave, 16), S_OK);
  ASSERT_EQ(riff64_PrepareChunk(file, &kZrLabelData, &start), S_OK);
  ASSERT_TRUE(plat::SeekFile(file, kDataBytes, plat::kSeekCurrent, nullptr));
  ASSERT_EQ(riff64_CompleteChunk(file, start), S_OK);
  ASSERT_EQ(riff64_WriteChunkToFile(file, &kZrLabelBext, "abc", 3), S_OK);
  ASSERT_EQ(riff64_WriteChunkToFile(file, &kZrLabelFmt, "end", 3), S_OK);
  uint64_t length = 0;
  ASSERT_EQ(riff64_SaveLocation(file, &length), S_OK);
  EXPECT_EQ(length, 40 + 24 + (kDataBytes + 5) + 32 + 32);
  ASSERT_EQ(riff64_SetRIFFSize(file, length - 24), S_OK);

  uint64_t size = 0;
  int64_t bound = 0;
  EXPECT_EQ(riff64_FindChunkHeaderInRIFF(file, &kZrLabelFmt, &size, &bound), S_OK);
  EXPECT_EQ(size, 8u);
  EXPECT_EQ(bound, 8);
  EXPECT_EQ(riff64_DeleteChunk(file, &kZrLabelBext, &size), S_OK);
  EXPECT_EQ(size, 32u);
  EXPECT_EQ(riff64_FindChunkHeaderInRIFF(file, &kZrLabelFmt, &size, nullptr), S_OK);
  char data[3];
  EXPECT_EQ(riff64_ReadData(file, data, 3), S_OK);
  EXPECT_EQ(std::memcmp(data, "end", 3), 0);
  uint64_t newLength = 0;
  EXPECT_TRUE(plat::GetFileBytes(file, &newLength));
  EXPECT_EQ(newLength, length - 32);
  EXPECT_EQ(riff64_RestoreLocation(file, start), S_OK);
  uint32_t count = 0;
  EXPECT_EQ(riff64_GetNumListEntries(file, &count, nullptr), ZR_E_FILE_READ);
  EXPECT_EQ(count, 2u);
  plat::CloseFile(file);
}

// ---- Display list ----------------------------------------------------------------------------------

void* Block(const char* text, size_t bytes) {
  void* block = plat::AllocateZeroed(bytes);
  std::memcpy(block, text, bytes);
  return block;
}

TEST(DisplayList64, SavesItemsWithDataAndLoadsThemPadded) {
  const int64_t blocks = plat::LiveBlocks();
  tZRDISPITEM items[] = {{1, 5, Block("hello", 5)}, {8, 0, Block("x", 1)}, {9, 7, nullptr}, {2, 4, Block("four", 4)}};
  tZRDISPLIST list = {4, items};
  const MemoryFile file(Image().Fill(1));
  file.MoveTo(1);
  uint64_t total = 77;
  EXPECT_EQ(displist64_Save(file, &list, &total), S_OK);
  EXPECT_EQ(total, (24u + 16) + (24 + 8));
  Image expected;
  expected.Fill(1).Add(DisplayLabel()).U64(40).U32(1).Text("hello").Fill(7);
  expected.Add(DisplayLabel()).U64(32).U32(2).Text("four");
  EXPECT_EQ(file.Bytes(), expected.Bytes());
  displist_Free(&list);
  EXPECT_EQ(plat::LiveBlocks(), blocks);
  EXPECT_EQ(items[0].id, 1u);
  EXPECT_EQ(items[0].size, 0u);

  tZRDISPITEM wanted[] = {{8, 0, nullptr}, {1, 0, Block("old", 3)}};
  tZRDISPLIST loaded = {2, wanted};
  file.MoveTo(1);
  int64_t bound = 72;
  EXPECT_EQ(displist64_Load(file, &loaded, &bound), S_OK);
  EXPECT_EQ(bound, 0);
  EXPECT_EQ(file.Position(), 1u);
  EXPECT_EQ(wanted[0].data, nullptr);
  ASSERT_EQ(wanted[1].size, 12u);
  EXPECT_EQ(std::memcmp(wanted[1].data, "hello\0\0\0\0\0\0\0", 12), 0);
  displist_Free(&loaded);
  EXPECT_EQ(plat::LiveBlocks(), blocks);

  list.count = 0;
  total = 77;
  EXPECT_EQ(displist64_Save(file, &list, &total), S_OK);
  EXPECT_EQ(total, 0u);
}

TEST(DisplayList64, LoadPassesOverWhatItDoesNotWant) {
  const int64_t blocks = plat::LiveBlocks();
  Image image;
  image.Add(Chunk64(AudioLabel("bext"), Image().Ramp(3)));            // Another label.
  image.Add(Chunk64(DisplayLabel(), Image().Raw({1, 0})));            // Too short for an id.
  image.Add(Chunk64(DisplayLabel(), Image().U32(5).Text("five")));    // An id that isn't wanted.
  image.Add(Chunk64(DisplayLabel(), Image().U32(1).Text("odd")));     // Three bytes: the pad of 8, not of 2.
  image.Add(Chunk64(DisplayLabel(), Image().U32(8)));                 // An id alone.
  image.Add(Chunk64(DisplayLabel(), Image().U32(1).Text("second")));  // Replaces the first.
  tZRDISPITEM items[] = {{1, 0, nullptr}, {8, 0, nullptr}};
  tZRDISPLIST list = {2, items};
  const MemoryFile file(image);
  auto bound = static_cast<int64_t>(image.Size());
  EXPECT_EQ(displist64_Load(file, &list, &bound), S_OK);
  EXPECT_EQ(bound, 0);
  ASSERT_EQ(items[0].size, 6u);
  EXPECT_EQ(std::memcmp(items[0].data, "second", 6), 0);
  EXPECT_EQ(items[1].size, 0u);
  EXPECT_EQ(plat::LiveBlocks(), blocks + 2);

  bound = 23;
  EXPECT_EQ(displist64_Load(file, &list, &bound), S_OK);
  EXPECT_EQ(bound, 23);
  EXPECT_EQ(items[0].size, 6u) << "as it was";
  EXPECT_EQ(displist64_Load(file, &list, nullptr), E_INVALIDARG);

  // Failures free the whole list and put the position back.
  struct Row {
    const char* name;
    Image image;
    uint32_t failAllocation;
    HRESULT result;
  };
  const Image good = Chunk64(DisplayLabel(), Image().U32(8).Text("good"));
  const Row rows[] = {
      {"bound behind the end", good, 0, ZR_E_FILE_READ},
      {"no id", Image().Add(good).Add(DisplayLabel()).U64(40).Fill(3), 0, ZR_E_FILE_READ},
      {"cut off", Image().Add(good).Add(DisplayLabel()).U64(40).U32(1).Fill(11), 0, ZR_E_FILE_READ},
      {"declared 2^62", Image().Add(good).Add(DisplayLabel()).U64(1ull << 62).U32(1).Fill(11), 0, ZR_E_FILE_READ},
      {"no memory", good, 1, E_OUTOFMEMORY},
  };
  for (const Row& row : rows) {
    const MemoryFile bad(row.image);
    bound = 1000;
    plat::FailAllocation(row.failAllocation);
    EXPECT_EQ(displist64_Load(bad, &list, &bound), row.result) << row.name;
    plat::FailAllocation(0);
    EXPECT_EQ(bad.Position(), 0u);
    EXPECT_EQ(items[0].data, nullptr);
    EXPECT_EQ(plat::LiveBlocks(), blocks);
  }
}

}  // namespace
