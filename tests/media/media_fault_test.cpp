// SPDX-License-Identifier: Apache-2.0
// Every operation of every call fails once, and comes short once: the call must tell, restore what it promised to
// restore, and write nothing after the failure of a read.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "marlo110k/iff.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "media/testing/image.h"
#include "platform/sys/fault_file.h"

using namespace media_testing;

namespace {

/// One way in which the reads or writes of a file go wrong, from a call on.
struct Fault {
  const char* name;
  uint64_t plat::FileFaults::*at;
  uint64_t firstCall;  ///< What the field counts from: the faulty call itself, or the calls before it.
  uint64_t plat::FaultBackend::*calls;
};
constexpr Fault kFaults[] = {
    {"read error", &plat::FileFaults::readErrorAtCall, 0, &plat::FaultBackend::reads},
    {"write error", &plat::FileFaults::writeErrorAtCall, 0, &plat::FaultBackend::writes},
    {"short reads", &plat::FileFaults::shortReadsAfterCalls, 1, &plat::FaultBackend::reads},
    {"short writes", &plat::FileFaults::shortWritesAfterCalls, 1, &plat::FaultBackend::writes},
};

plat::FaultBackend* Install(plat::File* file, const Fault& fault, uint64_t call) {
  plat::FileFaults faults;
  faults.shortBytes = 0;
  faults.*fault.at = call - fault.firstCall;
  return plat::FaultBackend::Install(file, faults);
}

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
    uint64_t faults = 0;
    for (const Fault& fault : kFaults) {
      bool hasFailed = true;
      for (uint64_t call = 1; hasFailed; ++call) {
        SCOPED_TRACE(std::string(row.name) + ", " + fault.name + " at " + std::to_string(call));
        const MemoryFile file(row.image);
        const plat::FaultBackend* faulty = Install(file, fault, call);
        file.MoveTo(row.position);
        const HRESULT result = row.call(file);
        hasFailed = faulty->*fault.calls >= call;
        if (hasFailed) ++faults;
        if (!hasFailed) {
          EXPECT_EQ(result, S_OK) << "without a fault";
        } else if (!mayRecover(row)) {
          EXPECT_TRUE(FAILED(result));
        }
        if (row.restores) {
          EXPECT_EQ(file.Position(), row.position);
        }
        ASSERT_LT(call, 100u);
      }
    }
    EXPECT_GE(faults, 2u) << row.name << " did nothing that could fail";
  }
  displist_Free(DisplayList());
}

TEST(MediaFaults, OfTheLengthAreTold) {
  for (const char* name : {"riff_DeleteChunk", "riff64_DeleteChunk", "iff_DeleteChunk", "ZrInsertWavHeader",
                           "ZrInsertW64Header", "ZrFixTrashedWav", "ZrFixTrashedW64"}) {
    for (const Row& row : Rows()) {
      if (std::string(row.name) != name) continue;
      const MemoryFile file(row.image);
      plat::FileFaults faults;
      faults.failSize = true;
      plat::FaultBackend* faulty = plat::FaultBackend::Install(file, faults);
      EXPECT_TRUE(FAILED(row.call(file))) << name;
      faulty->faults.failSize = false;
      EXPECT_EQ(file.Bytes(), row.image.Bytes()) << name;
    }
  }
}

TEST(MediaFaults, AFailedReadWritesNothing) {
  for (const char* name : {"riff_UpdateRIFFSize", "riff64_UpdateRIFFSize"}) {
    for (const Row& row : Rows()) {
      if (std::string(row.name) != name) continue;
      const MemoryFile file(row.image);
      plat::FaultBackend* faulty = Install(file, kFaults[2], 1);
      EXPECT_EQ(row.call(file), ZR_E_FILE_READ);
      faulty->faults = {};
      EXPECT_EQ(file.Bytes(), row.image.Bytes());
    }
  }
}

}  // namespace
