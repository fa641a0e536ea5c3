// SPDX-License-Identifier: Apache-2.0
// A RIFF file's foreign chunks as a stream: resumed at every byte, and each way in which it ends.
#include <gtest/gtest.h>

#include <algorithm>

#include "marlo110k/riff.h"
#include "marlo110k/streams.h"
#include "media/testing/image.h"
#include "platform/base/memory.h"
#include "platform/sys/fault_file.h"

using namespace media_testing;

namespace {

/// Knows what a wave file holds, and leaves the position elsewhere, as it may.
int32_t KnowsWave(plat::File* file, uint32_t id) {
  plat::SeekFile(file, 3, plat::kSeekStart, nullptr);
  return id == ZrChunkId("fmt ") || id == ZrChunkId("data");
}

Image StreamHeader(uint32_t items) {
  return Image().U32(28).U32(100).U32(items).Raw(&kZrUnknownChunkStream, sizeof(GUID));
}

Image Item(const char* id, const Image& data) {
  const auto bytes = static_cast<uint32_t>(data.Size());
  Image item = Image().U32(28).U32(100).Raw(&kZrUnknownChunkStream, sizeof(GUID)).U32(bytes + 8);
  return item.Chunk(id, data);
}

Image Riff(const Image& chunks) {
  return Image().Text("RIFF").U32(static_cast<uint32_t>(chunks.Size() + 4)).Text("WAVE").Add(chunks);
}

plat::File* Open(const Image& image) { return plat::OpenMemoryFile(image.Data(), image.Size(), image.Size()); }

/// Reads to the end in pieces. @return the last result.
HRESULT ReadAll(IStream* stream, uint32_t piece, std::vector<uint8_t>* bytes) {
  bytes->clear();
  for (;;) {
    uint8_t buffer[512];
    uint32_t moved = 0;
    const HRESULT result = stream->Read(buffer, piece, &moved);
    bytes->insert(bytes->end(), buffer, buffer + moved);
    if (result != S_OK) return result;
    if (moved != piece || bytes->size() > 100'000) return E_UNEXPECTED;
  }
}

TEST(UnknownChunkStream, ResumesAtEveryByte) {
  const int64_t before = plat::LiveBlocks();
  const Image odd = Image().Ramp(33);
  const Image list = Image().Text("INFO").Chunk("INAM", Image().Text("abc"));
  const Image image = Riff(Image()
                               .Chunk("odd ", odd)
                               .Chunk("fmt ", Image().Ramp(16))
                               .Chunk("none", Image())
                               .Chunk("LIST", list)
                               .Chunk("data", Image().Ramp(301))
                               .Chunk("last", Image().Ramp(1)))
                          .Chunk("past", Image().Ramp(4));
  const Image expected =
      StreamHeader(3).Add(Item("odd ", odd)).Add(Item("LIST", list)).Add(Item("last", Image().Ramp(1)));
  IStream* stream = nullptr;
  ASSERT_EQ(ZrMetaStream_CreateUnknownChunk(Open(image), KnowsWave, &stream), S_OK);
  for (uint32_t piece = 1; piece <= expected.Size() + 1; ++piece) {
    std::vector<uint8_t> bytes;
    EXPECT_EQ(ReadAll(stream, piece, &bytes), S_FALSE);
    ASSERT_EQ(bytes, expected.Bytes()) << piece;
    uint64_t position = 9;
    EXPECT_EQ(stream->Seek(1, STREAM_SEEK_CUR, &position), E_NOTIMPL);
    EXPECT_EQ(stream->Seek(5, piece % 2 == 0 ? STREAM_SEEK_SET : STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position, 0u);
  }
  EXPECT_EQ(stream->Release(), 0u) << "closes the file";
  EXPECT_EQ(plat::LiveBlocks(), before);
}

TEST(UnknownChunkStream, EndsWhereTheFileCantBeTrusted) {
  const Image four = Image().Ramp(4);
  const Image good = Image().Chunk("good", four);
  const auto withEmptyChunks = [&good](int count) {
    Image chunks;
    for (int i = 0; i < count; ++i) chunks.Chunk(i % 3 == 0 ? "aaaa" : "bbbb", Image());
    return Riff(chunks.Add(good));
  };
  const Image whole = StreamHeader(1).Add(Item("good", four));
  const Image cut = Item("cut ", Image().Fill(20));
  const Image shortData = Riff(Image(good).Text("cut ").U32(20).Fill(12));
  const Image unpadded = Riff(Image().Text("odd ").U32(3).Text("abc"));
  const struct {
    const char* name;
    Image image;
    HRESULT result;
    Image expected;
  } kRows[] = {
      {"50 empty", withEmptyChunks(50), S_FALSE, whole},
      {"51 empty", withEmptyChunks(51), E_FAIL, StreamHeader(0)},
      {"negative size", Riff(Image(good).Text("huge").U32(0x80000000)), E_FAIL, whole},
      {"short data", shortData, ZR_E_FILE_READ,
       StreamHeader(2).Add(Item("good", four)).Raw(cut.Data(), cut.Size() - 8)},
      {"no pad byte", unpadded, S_FALSE, StreamHeader(1).Add(Item("odd ", Image().Text("abc")))},
      {"no RIFF", Image().Text("RIFX").U32(20).Text("WAVE").Add(good), S_FALSE, StreamHeader(0)},
      {"no form type", Image().Text("RIFF").U32(20), S_FALSE, StreamHeader(0)},
      {"empty file", Image(), S_FALSE, StreamHeader(0)},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    IStream* stream = nullptr;
    ASSERT_EQ(ZrMetaStream_CreateUnknownChunk(Open(row.image), KnowsWave, &stream), S_OK);
    std::vector<uint8_t> bytes;
    EXPECT_EQ(ReadAll(stream, 1, &bytes), row.result);
    EXPECT_EQ(bytes, row.expected.Bytes());
    EXPECT_EQ(stream->Read(bytes.data(), 1, nullptr), row.result) << "until a seek";
    stream->Release();
  }
}

TEST(UnknownChunkStream, ReadErrorsEndItAndAMissingFileIsAHeader) {
  const Image image = Riff(Image().Chunk("good", Image().Ramp(40)));
  plat::File* file = Open(image);
  plat::FaultBackend* faults = plat::FaultBackend::Install(file, {});
  IStream* stream = nullptr;
  ASSERT_EQ(ZrMetaStream_CreateUnknownChunk(file, KnowsWave, &stream), S_OK);
  uint8_t buffer[128];
  uint32_t moved = 0;
  ASSERT_EQ(stream->Read(buffer, 64 + 3, &moved), S_OK);
  faults->faults.readErrorAtCall = faults->reads + 1;
  EXPECT_EQ(stream->Read(buffer, 64, &moved), ZR_E_FILE_READ);
  EXPECT_EQ(moved, 0u);
  stream->Release();

  ASSERT_EQ(ZrMetaStream_CreateUnknownChunk(plat::kInvalidFile, KnowsWave, &stream), S_OK);
  EXPECT_EQ(stream->Seek(0, STREAM_SEEK_SET, nullptr), ZR_E_END_OF_STREAM);
  EXPECT_EQ(stream->Read(buffer, 0, &moved), E_INVALIDARG);
  EXPECT_EQ(stream->Read(buffer, 64, &moved), S_FALSE);
  EXPECT_EQ(std::vector<uint8_t>(buffer, buffer + moved), StreamHeader(0).Bytes());
  const int64_t before = plat::LiveBlocks();
  (*reinterpret_cast<void* (***)(IStream*, uint32_t)>(stream))[14](stream, 1);
  EXPECT_EQ(plat::LiveBlocks(), before - 1) << "the deleter's slot";
  EXPECT_EQ(ZrMetaStream_CreateUnknownChunk(nullptr, KnowsWave, &stream), E_INVALIDARG);
  EXPECT_EQ(ZrMetaStream_CreateUnknownChunk(plat::kInvalidFile, nullptr, &stream), E_INVALIDARG);
}

}  // namespace
