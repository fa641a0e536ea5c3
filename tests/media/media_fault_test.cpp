// SPDX-License-Identifier: Apache-2.0
// Every operation of every call fails once, and comes short once: the call must tell, restore what it promised to
// restore, and write nothing after the failure of a read.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "marlo110k/iff.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "media/testing/image.h"
#include "platform/sys/file_backend.h"

using namespace media_testing;

namespace {

enum class Fault { kError, kShort };

/// Passes through until its turn comes, then fails one read or write.
class FaultyBackend final : public plat::FileBackend {
 public:
  /// Puts itself between an open file and what stands behind it; lives as long as the file.
  static FaultyBackend* Insert(plat::File* file, uint32_t turn, Fault fault) {
    auto* faulty = new FaultyBackend(turn, fault);
    faulty->real_.reset(plat::ExchangeBackend(file, faulty));
    return faulty;
  }

  uint32_t ReadAt(uint64_t offset, void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    if (!IsTurn()) return real_->ReadAt(offset, buffer, bytes, bytesRead);
    *bytesRead = 0;
    if (fault_ == Fault::kError) return 30;
    return bytes == 0 ? 0 : real_->ReadAt(offset, buffer, bytes - 1, bytesRead);
  }
  uint32_t WriteAt(uint64_t offset, const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    if (!IsTurn()) return real_->WriteAt(offset, data, bytes, bytesWritten);
    *bytesWritten = 0;
    if (fault_ == Fault::kShort && bytes > 0) real_->WriteAt(offset, data, bytes - 1, bytesWritten);
    return 112;
  }
  uint32_t SetBytes(uint64_t bytes) override { return IsTurn() ? 112 : real_->SetBytes(bytes); }
  uint32_t GetBytes(uint64_t* bytes) override { return real_->GetBytes(bytes); }
  uint32_t Flush() override { return real_->Flush(); }
  bool HasFailed() const { return turn_ == 0; }

 private:
  FaultyBackend(uint32_t turn, Fault fault) : turn_(turn), fault_(fault) {}
  bool IsTurn() { return turn_ != 0 && --turn_ == 0; }

  std::unique_ptr<plat::FileBackend> real_;
  uint32_t turn_;
  Fault fault_;
};

struct Row {
  const char* name;
  Image image;
  uint64_t position;
  bool restores;
  std::function<HRESULT(plat::File*)> call;
};

Image RiffImage() {
  const Image list = Image().Text("INFO").Chunk("INAM", Image().Text("abc"));
  const Image chunks =
      Image().Chunk("fmt ", Image().Format(1, 2, 44100, 16)).Chunk("LIST", list).Chunk("data", Image().Ramp(5000));
  return Image().Text("RIFF").U32(static_cast<uint32_t>(chunks.Size() + 4)).Text("WAVE").Add(chunks);
}

Image Riff64Image() {
  Image list;
  list.Add(AudioLabel("wave")).Add(Chunk64(DisplayLabel(), Image().U32(1).Text("text")));
  Image chunks = Chunk64(AudioLabel("fmt "), Image().Format(1, 2, 44100, 16));
  chunks.Add(Chunk64(ListLabel(), list)).Add(Chunk64(AudioLabel("data"), Image().Ramp(5000)));
  return Image().Add(RiffLabel()).U64(chunks.Size() + 40).Add(AudioLabel("wave")).Add(chunks);
}

Image AiffImage() {
  Image image = Image()
                    .Text("FORM")
                    .Be(12 + 30 + 18 + 4096 + 8, 4)
                    .Text("AIFC")
                    .Text("COMM")
                    .Be(22, 4)
                    .Be(2, 2)
                    .Be(4, 4)
                    .Be(16, 2);
  image.Raw({0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0}).Text("sowt");
  image.Text("MARK").Be(10, 4).Be(1, 2).Be(1, 2).Be(7, 4).Raw({1, 'a'});
  return image.Text("SSND").Be(8 + 4096, 4).Fill(8).Ramp(4096);
}

const WAVEFORMATEX kCd = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};
uint32_t word;
uint64_t wide;
int64_t bound;
GUID label;

tZRDISPLIST* DisplayList() {
  static tZRDISPITEM item = {1, 0, nullptr};
  static tZRDISPLIST list = {1, &item};
  displist_Free(&list);
  return &list;
}

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      {"riff_ReadFileID", RiffImage(), 0, false, [](auto* f) { return riff_ReadFileID(f, &word, &word); }},
      {"riff_FindChunkHeaderInRIFF", RiffImage(), 0, false,
       [](auto* f) { return riff_FindChunkHeaderInRIFF(f, ZrChunkId("data"), &word, nullptr); }},
      {"riff_FindListChunkFromStart", RiffImage(), 0, false,
       [](auto* f) { return riff_FindListChunkFromStart(f, ZrChunkId("INFO"), &word); }},
      {"riff_GetNumListEntries", RiffImage(), 12, true,
       [](auto* f) {
         uint32_t left = 26 + 24 + 5008;
         return riff_GetNumListEntries(f, &word, &left);
       }},
      {"riff_SeekListEntry", RiffImage(), 12, false, [](auto* f) { return riff_SeekListEntry(f, 3, nullptr); }},
      {"riff_WriteChunk", {}, 0, false, [](auto* f) { return riff_WriteChunk(f, 1, "abc", 3, nullptr); }},
      {"riff_WriteANSIString", {}, 0, false, [](auto* f) { return riff_WriteANSIString(f, u"abc", nullptr); }},
      {"riff_SetRIFFSize", RiffImage(), 99, true, [](auto* f) { return riff_SetRIFFSize(f, 9); }},
      {"riff_UpdateRIFFSize", RiffImage(), 99, true, [](auto* f) { return riff_UpdateRIFFSize(f, 9); }},
      {"riff_DeleteChunk", RiffImage(), 0, false,
       [](auto* f) { return riff_DeleteChunk(f, ZrChunkId("fmt "), nullptr, 0); }},
      {"riff_DeleteChunk of a list", RiffImage(), 0, false,
       [](auto* f) { return riff_DeleteChunk(f, ZrChunkId("INFO"), nullptr, 1); }},
      {"riff64_ReadListHeader", Riff64Image(), 88, false,
       [](auto* f) { return riff64_ReadListHeader(f, &label, &wide); }},
      {"riff64_FindListChunk", Riff64Image(), 40, false,
       [](auto* f) { return riff64_FindListChunk(f, &kZrLabelWave, &wide, nullptr); }},
      {"riff64_GetNumListEntries", Riff64Image(), 40, true,
       [](auto* f) {
         bound = 48 + 72 + 5024;
         return riff64_GetNumListEntries(f, &word, &bound);
       }},
      {"riff64_WriteChunk",
       {},
       0,
       false,
       [](auto* f) { return riff64_WriteChunk(f, &kZrLabelData, "abc", 3, nullptr); }},
      {"riff64_WriteChunkToFile",
       {},
       0,
       false,
       [](auto* f) { return riff64_WriteChunkToFile(f, &kZrLabelData, "abc", 3); }},
      {"riff64_PrepareList", {}, 0, false, [](auto* f) { return riff64_PrepareList(f, &kZrLabelData, &wide); }},
      {"riff64_UpdateRIFFSize", Riff64Image(), 99, true, [](auto* f) { return riff64_UpdateRIFFSize(f, 8); }},
      {"riff64_DeleteChunk", Riff64Image(), 0, false,
       [](auto* f) { return riff64_DeleteChunk(f, &kZrLabelFmt, nullptr); }},
      {"displist64_Load", Riff64Image(), 128, true,
       [](auto* f) {
         bound = 32;
         return displist64_Load(f, DisplayList(), &bound);
       }},
      {"iff_GetAIFFWfx", AiffImage(), 0, false,
       [](auto* f) {
         WAVEFORMATEX format;
         return iff_GetAIFFWfx(f, &format, &bound, &bound);
       }},
      {"iff_FindMarker", AiffImage(), 0, false,
       [](auto* f) {
         tIFFMARKER marker;
         return iff_FindMarker(f, &marker, 1);
       }},
      {"iff_DeleteChunk", AiffImage(), 0, false, [](auto* f) { return iff_DeleteChunk(f, ZrIffId("MARK"), nullptr); }},
      {"ZrInsertWavHeader", RiffImage(), 99, true, [](auto* f) { return ZrInsertWavHeader(f, &kCd, 8, 3000); }},
      {"ZrInsertW64Header", Riff64Image(), 99, true, [](auto* f) { return ZrInsertW64Header(f, &kCd, 8, 3000); }},
      {"ZrFixTrashedWav", RiffImage(), 99, true, [](auto* f) { return ZrFixTrashedWav(f, &kCd, 4000); }},
      {"ZrFixTrashedW64", Riff64Image(), 99, true, [](auto* f) { return ZrFixTrashedW64(f, &kCd, 4000); }},
  };
  return rows;
}

TEST(MediaFaults, AreToldWhereverTheyHappen) {
  // The repair's search takes a failed read for a chunk that isn't there and scans on.
  const auto mayRecover = [](const Row& row) { return std::string(row.name).rfind("ZrFix", 0) == 0; };
  for (const Row& row : Rows()) {
    for (const Fault fault : {Fault::kError, Fault::kShort}) {
      bool hasFailed = true;
      uint32_t turn = 1;
      for (; hasFailed && turn < 100; ++turn) {
        const MemoryFile file(row.image);
        const FaultyBackend* faulty = FaultyBackend::Insert(file, turn, fault);
        file.MoveTo(row.position);
        const HRESULT result = row.call(file);
        hasFailed = faulty->HasFailed();
        if (!hasFailed) {
          EXPECT_EQ(result, S_OK) << row.name << " without a fault";
        } else if (!mayRecover(row)) {
          EXPECT_TRUE(FAILED(result)) << row.name << " at " << turn;
        }
        if (row.restores) {
          EXPECT_EQ(file.Position(), row.position) << row.name << " at " << turn;
        }
      }
      EXPECT_GT(turn, 2u) << row.name << " did nothing that could fail";
      EXPECT_LT(turn, 100u) << row.name;
    }
  }
  displist_Free(DisplayList());
}

TEST(MediaFaults, AFailedReadWritesNothing) {
  for (const char* name : {"riff_UpdateRIFFSize", "riff64_UpdateRIFFSize"}) {
    for (const Row& row : Rows()) {
      if (std::string(row.name) != name) continue;
      const MemoryFile file(row.image);
      FaultyBackend::Insert(file, 1, Fault::kShort);
      EXPECT_EQ(row.call(file), ZR_E_FILE_READ);
      EXPECT_EQ(file.Bytes(), row.image.Bytes());
    }
  }
}

}  // namespace
