// SPDX-License-Identifier: Apache-2.0
// RIFF headers and data over files: the bytes written, what comes back, and the order of failures.
#include "marlo110k/riff.h"

#include <gtest/gtest.h>

#include "media/testing/image.h"
#include "platform/base/memory.h"

using namespace media_testing;

namespace {

TEST(RiffIds, AreTheFileBytesLittleEndian) {
  EXPECT_EQ(ZrChunkId("RIFF"), 0x46464952u);
  EXPECT_EQ(ZrChunkId("LIST"), 0x5453494Cu);
  EXPECT_EQ(ZrChunkId("WAVE"), 0x45564157u);
  EXPECT_EQ(ZrChunkId("fmt "), 0x20746D66u);
  EXPECT_EQ(ZrChunkId("CDDA"), 0x41444443u);
}

TEST(RiffWrite, GivesTheseBytes) {
  const MemoryFile file;
  uint32_t total = 0;
  uint32_t written = 0;
  EXPECT_EQ(riff_WriteFileID(file, ZrChunkId("WAVE"), 0x01020304), S_OK);
  EXPECT_EQ(riff_WriteListHeader(file, ZrChunkId("INFO"), 4), S_OK);
  EXPECT_EQ(riff_WriteChunkHeader(file, ZrChunkId("data"), 0xFFFFFFFF), S_OK);
  EXPECT_EQ(riff_WriteChunk(file, ZrChunkId("odd "), "abc", 3, &total), S_OK);
  EXPECT_EQ(total, 12u);
  EXPECT_EQ(riff_WriteChunk(file, ZrChunkId("even"), "ab", 2, &total), S_OK);
  EXPECT_EQ(total, 10u);
  EXPECT_EQ(riff_WriteChunk(file, ZrChunkId("none"), nullptr, 0, nullptr), S_OK);
  EXPECT_EQ(riff_WriteANSIString(file, u"a\u20ACc", &written), S_OK);  // Three characters and the terminator: even.
  EXPECT_EQ(written, 4u);
  EXPECT_EQ(riff_WriteANSIString(file, u"ab", &written), S_OK);
  EXPECT_EQ(written, 4u);
  EXPECT_EQ(riff_WriteANSIString(file, u"", &written), S_OK);
  EXPECT_EQ(written, 2u);

  Image expected;
  expected.Text("RIFF").Raw({4, 3, 2, 1}).Text("WAVE");
  expected.Text("LIST").U32(4).Text("INFO");
  expected.Text("data").U32(0xFFFFFFFF);
  expected.Text("odd ").U32(3).Text("abc").Fill(1);
  expected.Text("even").U32(2).Text("ab");
  expected.Text("none").U32(0);
  expected.Raw({'a', 0x80, 'c', 0, 'a', 'b', 0, 0, 0, 0});
  EXPECT_EQ(file.Bytes(), expected.Bytes());
}

TEST(RiffWrite, AFullDiskIsAWriteError) {
  // What each call takes is more than the room that is left.
  const Image empty;
  for (const uint64_t room : {0, 7, 8, 10}) {
    const MemoryFile file(empty, room);
    EXPECT_EQ(riff_WriteChunk(file, 1, "abc", 3, nullptr), ZR_E_FILE_WRITE) << room;
  }
  const MemoryFile header(empty, 7);
  EXPECT_EQ(riff_WriteChunkHeader(header, 1, 2), ZR_E_FILE_WRITE);
  const MemoryFile list(empty, 11);
  EXPECT_EQ(riff_WriteListHeader(list, 1, 2), ZR_E_FILE_WRITE);
  const MemoryFile text(empty, 3);
  EXPECT_EQ(riff_WriteANSIString(text, u"abc", nullptr), ZR_E_FILE_WRITE);
}

TEST(RiffValidate, LooksAtTheSizeAlone) {
  EXPECT_EQ(riff_ValidateChunkHeader(0, 1), S_OK);
  EXPECT_EQ(riff_ValidateChunkHeader(0, 0x7FFFFFFF), S_OK);
  EXPECT_EQ(riff_ValidateChunkHeader(ZrChunkId("RIFF"), 0), ZrCode(0x8004E082));
  EXPECT_EQ(riff_ValidateChunkHeader(0, -1), ZrCode(0x8004E083));
  EXPECT_EQ(riff_ValidateChunkHeader(0, INT32_MIN), ZrCode(0x8004E083));
}

TEST(RiffReadFileId, ReadsEightBytesBeforeItLooksAtTheId) {
  struct Row {
    const char* name;
    Image image;
    HRESULT result;
    uint32_t size;
  };
  const Row rows[] = {
      {"empty", Image(), ZR_E_FILE_READ, 0},
      {"7 bytes", Image().Text("RIFF").Fill(3), ZR_E_FILE_READ, 0},
      {"7 bytes, other id", Image().Text("RIFX").Fill(3), ZR_E_FILE_READ, 0},
      {"other id", Image().Text("RIFX").U32(100).Text("WAVE"), ZR_E_NO_RIFF_HEADER, 0},
      {"no form type", Image().Text("RIFF").U32(100), ZR_E_FILE_READ, 0},
      {"short form type", Image().Text("RIFF").U32(100).Text("WAV"), ZR_E_FILE_READ, 0},
      {"whole", Image().Text("RIFF").U32(100).Text("WAVE"), S_OK, 96},
      {"largest", Image().Text("RIFF").U32(0xFFFFFFFF).Text("WAVE"), S_OK, 0xFFFFFFFB},
      {"never closed", Image().Text("RIFF").U32(0).Text("WAVE"), S_OK, 0xFFFFFFFC},
  };
  for (const Row& row : rows) {
    const MemoryFile file(row.image);
    uint32_t size = 77;
    uint32_t form = 77;
    EXPECT_EQ(riff_ReadFileID(file, &size, &form), row.result) << row.name;
    EXPECT_EQ(size, row.size) << row.name;
    EXPECT_EQ(form, SUCCEEDED(row.result) ? ZrChunkId("WAVE") : 77u) << row.name;
    file.MoveTo(0);
    EXPECT_EQ(riff_ReadFileID(file, nullptr, nullptr), row.result) << row.name;
  }
}

TEST(RiffReadListHeader, ReadsEightBytesBeforeItLooksAtTheId) {
  struct Row {
    const char* name;
    Image image;
    HRESULT result;
  };
  const Row rows[] = {
      {"7 bytes", Image().Text("JUNK").Fill(3), ZR_E_FILE_READ},
      {"other id", Image().Text("list").U32(8).Text("INFO"), ZR_E_NO_LIST_HEADER},
      {"no type", Image().Text("LIST").U32(8).Text("INF"), ZR_E_FILE_READ},
      {"whole", Image().Text("LIST").U32(8).Text("INFO"), S_OK},
  };
  for (const Row& row : rows) {
    const MemoryFile file(row.image);
    uint32_t type = 0;
    uint32_t size = 0;
    EXPECT_EQ(riff_ReadListHeader(file, &type, &size), row.result) << row.name;
    if (FAILED(row.result)) continue;
    EXPECT_EQ(type, ZrChunkId("INFO"));
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(file.Position(), 12u);
  }
}

TEST(RiffReadData, SkipsThePadOfAnOddCount) {
  const MemoryFile file(Image().Ramp(9));
  uint8_t buffer[8] = {};
  EXPECT_EQ(riff_ReadData(file, buffer, 3), S_OK);
  EXPECT_EQ(file.Position(), 4u);
  EXPECT_EQ(riff_ReadData(file, buffer, 4), S_OK);
  EXPECT_EQ(file.Position(), 8u);
  EXPECT_EQ(buffer[0], 5);
  EXPECT_EQ(riff_ReadData(file, buffer, 0), S_OK);
  EXPECT_EQ(riff_ReadData(file, buffer, 1), S_OK) << "a missing pad byte is no error";
  EXPECT_EQ(riff_ReadData(file, buffer, 1), ZR_E_FILE_READ);
}

TEST(RiffReadDataBounded, ReadsWhatFitsAndEndsBehindTheChunk) {
  struct Row {
    uint32_t buffer;
    uint32_t chunk;
    uint32_t read;
    uint64_t end;
  };
  const Row rows[] = {{4, 10, 4, 10}, {4, 9, 4, 10}, {10, 3, 3, 4}, {0, 5, 0, 6}, {3, 3, 3, 4}, {3, 0, 0, 0}};
  for (const Row& row : rows) {
    const MemoryFile file(Image().Ramp(16));
    uint8_t buffer[10];
    std::memset(buffer, 0xEE, sizeof buffer);
    EXPECT_EQ(riff_ReadDataBounded(file, buffer, row.buffer, row.chunk), S_OK);
    EXPECT_EQ(file.Position(), row.end) << row.buffer << " of " << row.chunk;
    for (uint32_t i = 0; i < sizeof buffer; ++i) EXPECT_EQ(buffer[i], i < row.read ? i + 1 : 0xEE);
  }
  const MemoryFile shorter(Image().Ramp(3));
  uint8_t buffer[4];
  EXPECT_EQ(riff_ReadDataBounded(shorter, buffer, 4, 4), ZR_E_FILE_READ);
}

TEST(RiffReadDataAlloc, OwnsItsBlock) {
  const int64_t blocks = plat::LiveBlocks();
  const MemoryFile file(Image().Ramp(6));
  int dummy = 0;
  tZRCHUNKDATA chunk = {0, &dummy};
  EXPECT_EQ(riff_ReadDataAlloc(file, &chunk), S_OK);
  EXPECT_EQ(chunk.data, nullptr) << "size 0";
  chunk = {3, nullptr};
  ASSERT_EQ(riff_ReadDataAlloc(file, &chunk), S_OK);
  EXPECT_EQ(std::memcmp(chunk.data, "\1\2\3", 3), 0);
  EXPECT_EQ(plat::BlockBytes(chunk.data), 3u);
  EXPECT_EQ(file.Position(), 4u);
  plat::FreeBlock(chunk.data);

  chunk = {2, nullptr};
  plat::FailAllocation(1);
  EXPECT_EQ(riff_ReadDataAlloc(file, &chunk), E_OUTOFMEMORY);
  plat::FailAllocation(0);
  EXPECT_EQ(chunk.data, nullptr);
  // Sizes that the file can't hold fail as short reads, and without the memory: 4 GiB here would show.
  for (const uint32_t size : {3u, 0x80000000u, 0xFFFFFFFFu}) {
    file.MoveTo(4);
    chunk = {size, &dummy};
    EXPECT_EQ(riff_ReadDataAlloc(file, &chunk), ZR_E_FILE_READ);
    EXPECT_EQ(chunk.data, nullptr);
    EXPECT_EQ(file.Position(), 6u);
  }
  EXPECT_EQ(plat::LiveBlocks(), blocks);
}

TEST(RiffAnsiString, IsCutConvertedAndLeftAtTheEndOfTheChunk) {
  struct Row {
    const char* name;
    uint32_t characters;
    uint32_t size;
    const char16_t* text;
    uint64_t end;
  };
  const Row rows[] = {
      {"fits", 16, 5, u"a\u20ACcd", 6},         // Five bytes with the terminator.
      {"exact", 5, 5, u"a\u20ACcd", 6},         //
      {"cut", 3, 5, u"a\u20AC", 6},             // Three bytes read, the last made the terminator.
      {"no terminator", 16, 4, u"a\u20ACc", 4}  // The last byte goes for it.
  };
  for (const Row& row : rows) {
    const MemoryFile file(Image().Raw({'a', 0x80, 'c', 'd', 0, 0, 'x', 'y'}));
    char16_t buffer[16];
    std::fill_n(buffer, 16, u'#');
    uint32_t size = row.size;
    EXPECT_EQ(riff_ReadANSIString(file, buffer, row.characters, &size), S_OK);
    EXPECT_EQ(std::u16string(buffer), row.text) << row.name;
    EXPECT_EQ(file.Position(), row.end) << row.name;
    if (row.characters < 16) {
      EXPECT_EQ(buffer[row.characters - 1], 0) << row.name;
      EXPECT_EQ(buffer[row.characters], u'#') << row.name;
    }
  }
  const MemoryFile file(Image().Text("ab"));
  char16_t buffer[4];
  uint32_t size = 2;
  EXPECT_EQ(riff_ReadANSIString(file, nullptr, 4, &size), E_INVALIDARG);
  EXPECT_EQ(riff_ReadANSIString(file, buffer, 4, nullptr), E_INVALIDARG);
  size = 3;
  EXPECT_EQ(riff_ReadANSIString(file, buffer, 4, &size), ZR_E_FILE_READ);
}

TEST(RiffPositions, AreSavedSetAndSkipped) {
  const MemoryFile file(Image().Ramp(20));
  uint32_t position = 0;
  EXPECT_EQ(riff_SeekDataStart(file), S_OK);
  EXPECT_EQ(riff_SaveLocation(file, &position), S_OK);
  EXPECT_EQ(position, 12u);
  EXPECT_EQ(riff_SkipChunk(file, 3), 4u);
  EXPECT_EQ(file.Position(), 16u);
  EXPECT_EQ(riff_SkipChunk(file, 0xFFFFFFFF), 0x100000000u) << "no wrap to 0";
  EXPECT_EQ(file.Position(), 0x100000010u);
  EXPECT_EQ(riff_SaveLocation(file, &position), S_OK);
  EXPECT_EQ(position, 0x10u) << "the low half";
  EXPECT_EQ(riff_RestoreLocation(file, 5), S_OK);
  EXPECT_EQ(file.Position(), 5u);
}

TEST(RiffCalls, RefuseNullArgumentsAndBadFiles) {
  const MemoryFile file(Image().Ramp(64));
  uint32_t word = 0;
  EXPECT_EQ(riff_ReadChunkHeader(file, nullptr, &word), E_INVALIDARG);
  EXPECT_EQ(riff_ReadChunkHeader(file, &word, nullptr), E_INVALIDARG);
  EXPECT_EQ(riff_ReadListHeader(file, &word, nullptr), E_INVALIDARG);
  EXPECT_EQ(riff_ReadData(file, nullptr, 1), E_INVALIDARG);
  EXPECT_EQ(riff_ReadDataBounded(file, nullptr, 1, 1), E_INVALIDARG);
  EXPECT_EQ(riff_ReadDataAlloc(file, nullptr), E_INVALIDARG);
  EXPECT_EQ(riff_WriteChunk(file, 1, nullptr, 1, nullptr), E_INVALIDARG);
  EXPECT_EQ(riff_WriteANSIString(file, nullptr, &word), E_INVALIDARG);
  EXPECT_EQ(riff_SaveLocation(file, nullptr), E_INVALIDARG);
  EXPECT_EQ(riff_GetNumListEntries(file, nullptr, nullptr), E_INVALIDARG);
  EXPECT_EQ(riff_GetFileSize(file, nullptr), E_INVALIDARG);
  EXPECT_EQ(riff_ReadRIFFCDDA(file, nullptr), E_INVALIDARG);
  EXPECT_EQ(file.Position(), 0u);
  for (plat::File* bad : {static_cast<plat::File*>(nullptr), plat::kInvalidFile}) {
    EXPECT_EQ(riff_ReadFileID(bad, &word, &word), ZR_E_FILE_READ);
    EXPECT_EQ(riff_WriteChunkHeader(bad, 1, 2), ZR_E_FILE_WRITE);
    EXPECT_EQ(riff_FindChunkHeader(bad, 1, &word, nullptr), ZR_E_FILE_READ);
    EXPECT_EQ(riff_FindChunkHeaderInRIFF(bad, 1, &word, nullptr), ZR_E_FILE_READ);
    EXPECT_EQ(riff_GetNumListEntries(bad, &word, nullptr), ZR_E_FILE_READ);
    EXPECT_EQ(riff_UpdateRIFFSize(bad, 1), ZR_E_FILE_READ);
    EXPECT_EQ(riff_SetRIFFSize(bad, 1), ZR_E_FILE_WRITE);
    EXPECT_EQ(riff_DeleteChunk(bad, 1, &word, 0), ZR_E_FILE_READ);
    EXPECT_EQ(riff_SkipChunk(bad, 5), 6u);
  }
}

TEST(RiffCdda, ReadsTheDescriptor) {
  const auto descriptor = [](const char* form, uint32_t formatBytes) {
    Image body;
    body.U16(1).U16(7).U32(0xCAFEBABE).U32(1234).U32(5678).Raw({74, 58, 3, 0, 9, 8, 7, 0});
    return Image().Text("RIFF").U32(12 + 24).Text(form).Text("fmt ").U32(formatBytes).Add(body);
  };
  const DiskFile file(descriptor("CDDA", 24));
  uint32_t track = 1, start = 1, frames = 1, length = 1, serial = 1;
  EXPECT_EQ(riff_ReadCDAFile(file.Path(), &track, &start, &frames, &length, &serial), S_OK);
  EXPECT_EQ(track, 7u);
  EXPECT_EQ(serial, 0xCAFEBABEu);
  EXPECT_EQ(start, 1234u);
  EXPECT_EQ(length, 5678u);
  EXPECT_EQ(frames, (3u * 60 + 58) * 75 + 74);
  EXPECT_EQ(riff_ReadCDAFile(file.Path(), nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);

  struct Row {
    Image image;
    HRESULT result;
  };
  const Row rows[] = {{descriptor("WAVE", 24), ZR_E_UNKNOWN_FORMAT},
                      {descriptor("CDDA", 23), ZR_E_UNSUPPORTED_VERSION},
                      {descriptor("CDDA", 25), ZR_E_UNSUPPORTED_VERSION},
                      {Image().Text("RIFF").U32(12).Text("CDDA").Chunk("JUNK", {}), ZR_E_NOT_FOUND},
                      {Image().Text("RIFF").U32(36).Text("CDDA").Text("fmt ").U32(24).Fill(23), ZR_E_FILE_READ},
                      {Image().Text("none"), ZR_E_FILE_READ}};
  for (const Row& row : rows) {
    file.Write(row.image);
    track = start = frames = length = serial = 1;
    EXPECT_EQ(riff_ReadCDAFile(file.Path(), &track, &start, &frames, &length, &serial), row.result);
    EXPECT_EQ(track + start + frames + length + serial, 0u);
  }
  file.Remove();
  track = start = frames = length = serial = 1;
  EXPECT_EQ(riff_ReadCDAFile(file.Path(), &track, &start, &frames, &length, &serial), ZR_E_FILE_OPEN);
  EXPECT_EQ(track + start + frames + length + serial, 0u);
}

}  // namespace
