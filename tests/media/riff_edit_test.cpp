// SPDX-License-Identifier: Apache-2.0
// The RIFF size and its limit, and taking chunks out, against a model.
#include <gtest/gtest.h>

#include <algorithm>

#include "marlo110k/riff.h"
#include "media/testing/image.h"
#include "testing/random.h"

using namespace media_testing;

namespace {

TEST(RiffSize, IsSetReadAndKeepsThePosition) {
  const MemoryFile file(Image().Text("RIFF").U32(4).Text("TEST").Fill(8, 9));
  file.MoveTo(17);
  EXPECT_EQ(riff_SetRIFFSize(file, 12), S_OK);
  EXPECT_EQ(file.Position(), 17u);
  uint32_t size = 0;
  EXPECT_EQ(riff_GetFileSize(file, &size), S_OK);
  EXPECT_EQ(size, 20u);
  EXPECT_EQ(file.Bytes(), Image().Text("RIFF").U32(12).Text("TEST").Fill(8, 9).Bytes());
}

TEST(RiffUpdateSize, UndoesAnAppendThatIsTooMuch) {
  struct Row {
    const char* name;
    uint32_t size;
    int64_t delta;
    HRESULT result;
    uint32_t newSize;
  };
  const Row rows[] = {
      {"grows", 20, 10, S_OK, 30},
      {"shrinks", 20, -10, S_OK, 10},
      {"last size that fits", 20, 0xFFFFFFF7LL - 20, S_OK, 0xFFFFFFF7},
      {"one more", 20, 0xFFFFFFF8LL - 20, ZR_E_FILE_TOO_LARGE, 20},
      {"far too much", 20, INT64_MAX, ZR_E_FILE_TOO_LARGE, 20},
      {"below nothing", 20, -21, S_OK, 0},
      {"far below nothing", 20, INT64_MIN, S_OK, 0},
  };
  for (const Row& row : rows) {
    const MemoryFile file(Image().Text("RIFF").U32(row.size).Text("TEST").Fill(30, 7));
    file.MoveTo(42);
    EXPECT_EQ(riff_UpdateRIFFSize(file, row.delta), row.result) << row.name;
    EXPECT_EQ(file.Position(), 42u) << row.name;
    const size_t length = SUCCEEDED(row.result) ? 42 : row.size + 8;
    EXPECT_EQ(file.Bytes(), Image().Text("RIFF").U32(row.newSize).Text("TEST").Fill(length - 12, 7).Bytes())
        << row.name;
  }
}

TEST(RiffUpdateSize, NeedsWhatItTouches) {
  const MemoryFile tooShort(Image().Text("RIFF").Fill(3));
  tooShort.MoveTo(2);
  EXPECT_EQ(riff_UpdateRIFFSize(tooShort, 1), ZR_E_FILE_READ);
  EXPECT_EQ(tooShort.Position(), 2u);

  const Image image = Image().Text("RIFF").U32(4).Text("TEST");
  const DiskFile disk(image);
  plat::File* readOnly = disk.Open(plat::kReadAccess);
  EXPECT_EQ(riff_UpdateRIFFSize(readOnly, 1), ZR_E_FILE_WRITE);
  EXPECT_EQ(riff_UpdateRIFFSize(readOnly, INT64_MAX), ZR_E_FILE_TOO_LARGE);
  EXPECT_EQ(riff_SetRIFFSize(readOnly, 1), ZR_E_FILE_WRITE);
  EXPECT_EQ(riff_DeleteChunk(readOnly, 1, nullptr, 0), ZR_E_NOT_FOUND);
  plat::CloseFile(readOnly);
  EXPECT_EQ(disk.Bytes(), image.Bytes());
}

struct Piece {
  std::string id;
  Image data;
};

Image Riff(const std::vector<Piece>& pieces) {
  Image chunks;
  for (const Piece& piece : pieces) chunks.Chunk(piece.id.c_str(), piece.data);
  return Image().Text("RIFF").U32(static_cast<uint32_t>(chunks.Size()) + 4).Text("TEST").Add(chunks);
}

TEST(RiffDelete, LeavesTheOthersWhole) {
  // Chunk sizes around the block in which tails move.
  testing_support::Random random(32);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 60; ++round) {
    std::vector<Piece> pieces;
    for (auto left = random.Between(1, 6); left > 0; --left) {
      const bool isList = random.Between(0, 3) == 0;
      Image data;
      if (isList) data.Text(random.Between(0, 1) == 0 ? "aaab" : "aaac");
      const int64_t sizes[] = {0, 1, 7, 4084, 4087, 4096, 8192, random.Between(0, 9000)};
      data.Ramp(static_cast<size_t>(sizes[random.Between(0, 7)]), static_cast<uint8_t>(random.Bits()));
      pieces.push_back({isList ? "LIST" : std::string("aaa") + static_cast<char>('a' + random.Between(0, 2)), data});
    }
    for (const bool isList : {false, true}) {
      const MemoryFile file(Riff(pieces));
      std::vector<Piece> rest = pieces;
      const auto hit = std::find_if(rest.begin(), rest.end(), [isList](const Piece& piece) {
        return isList ? piece.id == "LIST" && std::memcmp(piece.data.Data(), "aaab", 4) == 0 : piece.id == "aaab";
      });
      uint32_t removed = 77;
      const HRESULT result = riff_DeleteChunk(file, ZrChunkId("aaab"), &removed, isList ? 1 : 0);
      if (hit == rest.end()) {
        EXPECT_EQ(result, ZR_E_NOT_FOUND);
        EXPECT_EQ(removed, 77u);
      } else {
        EXPECT_EQ(result, S_OK);
        EXPECT_EQ(removed, 8 + (hit->data.Size() + 1) / 2 * 2);
        rest.erase(hit);
      }
      EXPECT_EQ(file.Bytes(), Riff(rest).Bytes());
    }
  }
}

TEST(RiffDelete, OfAListTooShortForItsTypeTakesOnlyTheList) {
  const Image image = Image().Text("RIFF").U32(4 + 10 + 10).Text("TEST").Text("LIST").U32(2).Text("aa").Text("ab");
  const MemoryFile file(Image(image).U16(2).Fill(4, 5));
  EXPECT_EQ(riff_DeleteChunk(file, ZrChunkId("aaab"), nullptr, 1), S_OK);
  EXPECT_EQ(file.Bytes(), Image().Text("RIFF").U32(14).Text("TEST").Text("ab").U16(2).Fill(4, 5).Bytes());
}

TEST(RiffDelete, OfAChunkThatRunsPastTheEndCutsThere) {
  for (const uint32_t size : {5u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    const MemoryFile file(Image().Text("RIFF").U32(20).Text("TEST").Text("wild").U32(size).Fill(4));
    uint32_t removed = 0;
    EXPECT_EQ(riff_DeleteChunk(file, ZrChunkId("wild"), &removed, 0), S_OK) << size;
    EXPECT_EQ(removed, size == 0xFFFFFFFF ? 0xFFFFFFFF : size + 9);
    EXPECT_EQ(file.Bytes(), Image().Text("RIFF").U32(size == 5 ? 6 : 0).Text("TEST").Bytes()) << size;
  }
}

}  // namespace
