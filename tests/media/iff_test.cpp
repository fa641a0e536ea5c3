// SPDX-License-Identifier: Apache-2.0
// Big-endian chunks, AIFF formats and markers, and the 80-bit rate.
#include "marlo110k/iff.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "marlo110k/wavefile.h"
#include "media/testing/image.h"
#include "platform/base/memory.h"

using namespace media_testing;

namespace {

Image IffChunk(const char* id, const Image& data) {
  Image chunk = Image().Text(id).Be(data.Size(), 4).Add(data);
  return chunk.Fill(data.Size() % 2);
}

Image Form(const char* type, const Image& chunks) {
  return Image().Text("FORM").Be(chunks.Size() + 4, 4).Text(type).Add(chunks);
}

/// 44,100 is 1.345825... x 2^15: exponent 16383 + 15, mantissa 44100 << 48.
const Image kRate44100 = Image().Raw({0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0});

Image Common(uint16_t channels, uint32_t frames, uint16_t bits, const char* compression = "") {
  return IffChunk("COMM", Image().Be(channels, 2).Be(frames, 4).Be(bits, 2).Add(kRate44100).Text(compression));
}

Image Sound(uint32_t offset, size_t bytes) { return IffChunk("SSND", Image().Be(offset, 4).Be(0, 4).Ramp(bytes)); }

TEST(IffNumbers, AreSwapped) {
  EXPECT_EQ(ZrIffId("FORM"), 0x464F524Du);
  EXPECT_EQ(ZrIffId("sowt"), 0x736F7774u);
  uint16_t words[] = {0x0102, 0x0304, 0x0506};
  uint32_t longs[] = {0x01020304, 0x05060708};
  iff_ByteSwap16(words, 2);
  iff_ByteSwap32(longs, 1);
  EXPECT_EQ(words[0], 0x0201);
  EXPECT_EQ(words[1], 0x0403);
  EXPECT_EQ(words[2], 0x0506);
  EXPECT_EQ(longs[0], 0x04030201u);
  EXPECT_EQ(longs[1], 0x05060708u);
  aiff_WriteByteSwap16(words, 3);
  aiff_WriteByteSwap32(longs, 2);
  EXPECT_EQ(words[0], 0x0102);
  EXPECT_EQ(longs[1], 0x08070605u);

  const MemoryFile file;
  const tIFFCHUNK chunk = {ZrIffId("COMM"), 0x01020304};
  EXPECT_EQ(iff_WriteFileID(file, ZrIffId("AIFF"), 0x0A0B0C0D), S_OK);
  EXPECT_EQ(iff_WriteChunk(file, &chunk), S_OK);
  EXPECT_EQ(iff_WriteDWORD(file, 0x11223344), S_OK);
  EXPECT_EQ(iff_WriteWORD(file, 0x5566), S_OK);
  Image expected = Image().Text("FORM").Raw({0xA, 0xB, 0xC, 0xD}).Text("AIFF").Text("COMM").Raw({1, 2, 3, 4});
  expected.Raw({0x11, 0x22, 0x33, 0x44, 0x55, 0x66});
  EXPECT_EQ(file.Bytes(), expected.Bytes());

  file.MoveTo(0);
  tIFFCHUNK header = {};
  uint32_t form = 0, number = 0;
  uint16_t word = 0;
  EXPECT_EQ(iff_ReadFormType(file, &header, &form), S_OK);
  EXPECT_EQ(header.size, 0x0A0B0C0Du);
  EXPECT_EQ(form, ZrIffId("AIFF"));
  EXPECT_EQ(iff_ReadChunkHdr(file, &header), S_OK);
  EXPECT_EQ(header.id, ZrIffId("COMM"));
  EXPECT_EQ(iff_ReadDWORD(file, &number), S_OK);
  EXPECT_EQ(number, 0x11223344u);
  EXPECT_EQ(iff_ReadWORD(file, &word), S_OK);
  EXPECT_EQ(word, 0x5566);
  EXPECT_EQ(iff_ReadWORD(file, &word), ZR_E_FILE_READ);
  file.MoveTo(12);
  EXPECT_EQ(iff_ReadFormType(file, &header, &form), ZR_E_UNKNOWN_FORMAT);
  EXPECT_EQ(iff_SkipChunk(file, 0xFFFFFFFF), 0x100000000u);
}

TEST(IffFind, WrapsTheBoundWhereRiffHoldsIt) {
  const Image chunks = Image().Add(IffChunk("aaaa", Image().Ramp(5))).Add(IffChunk("bbbb", Image().Ramp(2)));
  uint32_t size = 0;
  const MemoryFile file(chunks);
  uint32_t bound = 24;
  EXPECT_EQ(iff_FindChunkHeader(file, ZrIffId("bbbb"), &size, &bound), S_OK);
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(bound, 2u);
  file.MoveTo(0);
  bound = 14;
  EXPECT_EQ(iff_FindChunkHeader(file, ZrIffId("bbbb"), &size, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(bound, 0u);
  file.MoveTo(0);
  bound = 10;
  EXPECT_EQ(iff_FindChunkHeader(file, ZrIffId("bbbb"), &size, &bound), S_OK) << "4 too few wrap to 4 GiB";
  EXPECT_EQ(bound, 0xFFFFFFFCu - 8);
  file.MoveTo(0);
  bound = 7;
  EXPECT_EQ(iff_FindChunkHeader(file, ZrIffId("bbbb"), &size, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(file.Position(), 0u);
  EXPECT_EQ(iff_SeekChunkHeader(file, ZrIffId("bbbb"), &size), S_OK);
  EXPECT_EQ(iff_SeekChunkHeader(file, ZrIffId("bbbb"), &size), ZR_E_FILE_READ);
}

TEST(IffFind, FromTheStartTellsWhatIsMissing) {
  struct Row {
    Image image;
    HRESULT result;
  };
  const Row rows[] = {{Image(), ZR_E_FILE_READ},
                      {Image().Text("FORM").Fill(3), ZR_E_FILE_READ},
                      {Image().Text("RIFF").Fill(8), ZR_E_NO_RIFF_HEADER},
                      {Image().Text("FORM").Be(4, 4).Text("AIF"), ZR_E_NO_RIFF_HEADER},
                      {Form("AIFF", {}), ZR_E_NOT_FOUND},
                      {Form("8SVX", IffChunk("aaaa", {})), ZR_E_NOT_FOUND},
                      {Form("8SVX", Image().Add(IffChunk("aaaa", Image().Ramp(3))).Add(IffChunk("MARK", {}))), S_OK}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    const MemoryFile file(rows[i].image);
    file.MoveTo(3);
    uint32_t size = 77;
    EXPECT_EQ(iff_FindChunkFromStart(file, ZrIffId("MARK"), &size), rows[i].result) << i;
    EXPECT_EQ(size, FAILED(rows[i].result) ? 77u : 0u);
  }
}

TEST(IsAiff, LooksAtTheFormAndTheCompression) {
  struct Row {
    const char* name;
    Image image;
    int32_t isAiff, isAifc, isLittle;
  };
  const Row rows[] = {
      {"empty", Image(), 0, 0, 0},
      {"AIFF with nothing in it", Form("AIFF", {}), 1, 0, 0},
      {"AIFC without COMM", Form("AIFC", {}), 0, 1, 0},
      {"AIFC NONE", Form("AIFC", Common(2, 1, 16, "NONE")), 1, 1, 0},
      {"AIFC sowt", Form("AIFC", Common(2, 1, 16, "sowt")), 1, 1, 1},
      {"AIFC fl32", Form("AIFC", Common(2, 1, 16, "fl32")), 0, 1, 0},
      {"AIFC with a short COMM", Form("AIFC", Common(2, 1, 16, "NON")), 0, 1, 0},
      {"other form", Form("8SVX", Common(2, 1, 16)), 0, 0, 0},
      {"little-endian id", Image().Text("MROF").Be(4, 4).Text("AIFF"), 0, 0, 0},
  };
  for (const Row& row : rows) {
    const MemoryFile file(row.image);
    file.MoveTo(2);
    uint32_t size = 77;
    int32_t isAifc = 77, isLittle = 77;
    EXPECT_EQ(iff_IsAIFFFileEx(file, &size, &isAifc, &isLittle), row.isAiff) << row.name;
    EXPECT_EQ(isAifc, row.isAifc) << row.name;
    EXPECT_EQ(isLittle, row.isLittle) << row.name;
    EXPECT_EQ(iff_IsAIFFFile(file, nullptr), row.isAiff) << row.name;
    if (row.isAiff != 0) {
      EXPECT_EQ(size, row.image.Size() - 8) << row.name;
      EXPECT_EQ(file.Position(), 12u) << row.name;
    }
  }
}

TEST(AiffFormat, IsReadFromBothForms) {
  struct Row {
    const char* name;
    Image image;
    WAVEFORMATEX format;
    int64_t frames;
    int64_t dataOffset;
  };
  const Image com16 = Common(2, 6, 16);  // 26 bytes.
  const Row rows[] = {
      {"16 bits", Form("AIFF", Image().Add(com16).Add(Sound(0, 24))), {0xFE02, 2, 44100, 176400, 4, 16, 0}, 6, 54},
      {"sound first", Form("AIFF", Image().Add(Sound(0, 24)).Add(com16)), {0xFE02, 2, 44100, 176400, 4, 16, 0}, 6, 28},
      {"8 bits",
       Form("AIFF", Image().Add(Common(1, 9, 8)).Add(Sound(0, 9))),
       {0xFE01, 1, 44100, 44100, 1, 8, 0},
       9,
       54},
      {"sowt",
       Form("AIFC", Image().Add(Common(2, 6, 16, "sowt")).Add(Sound(0, 24))),
       {1, 2, 44100, 176400, 4, 16, 0},
       6,
       58},
      {"sowt of 8 bits",
       Form("AIFC", Image().Add(Common(2, 6, 8, "sowt")).Add(Sound(0, 12))),
       {0xFE01, 2, 44100, 88200, 2, 8, 0},
       6,
       58},
      {"NONE",
       Form("AIFC", Image().Add(Common(2, 6, 24, "NONE")).Add(Sound(0, 36))),
       {0xFE02, 2, 44100, 264600, 6, 24, 0},
       6,
       58},
      {"offset", Form("AIFF", Image().Add(com16).Add(Sound(10, 24))), {0xFE02, 2, 44100, 176400, 4, 16, 0}, 3, 64},
      {"offset behind the end",
       Form("AIFF", Image().Add(com16).Add(Sound(25, 24))),
       {0xFE02, 2, 44100, 176400, 4, 16, 0},
       0,
       79},
      {"offset of 4 GiB",
       Form("AIFF", Image().Add(com16).Add(Sound(0xFFFFFFFF, 24))),
       {0xFE02, 2, 44100, 176400, 4, 16, 0},
       0,
       54 + 0xFFFFFFFFll},
      {"less sound than stated",
       Form("AIFF", Image().Add(com16).Add(Sound(0, 23))),
       {0xFE02, 2, 44100, 176400, 4, 16, 0},
       5,
       54},
      {"no sound", Form("AIFF", Image().Add(com16).Add(Sound(0, 0))), {0xFE02, 2, 44100, 176400, 4, 16, 0}, 0, 54},
      {"no bits", Form("AIFF", Image().Add(Common(2, 6, 0)).Add(Sound(0, 24))), {0xFE02, 2, 44100, 0, 1, 0, 0}, 6, 54},
      {"block align that wraps",
       Form("AIFF", Image().Add(Common(0x8000, 6, 16)).Add(Sound(0, 24))),
       {0xFE02, 0x8000, 44100, 0x10000u * 44100u, 1, 16, 0},
       6,
       54},
  };
  for (const Row& row : rows) {
    const MemoryFile file(row.image);
    WAVEFORMATEX format;
    int64_t frames = 0, offset = 0;
    EXPECT_EQ(iff_GetAIFFWfx(file, &format, &frames, &offset), S_OK) << row.name;
    EXPECT_EQ(std::memcmp(&format, &row.format, sizeof format), 0) << row.name;
    EXPECT_EQ(frames, row.frames) << row.name;
    EXPECT_EQ(offset, row.dataOffset) << row.name;
  }
}

TEST(AiffFormat, FailsAtEveryTruncationWithoutTouchingItsOutputs) {
  const Image whole = Form("AIFF", Image().Add(Common(2, 6, 16)).Add(Sound(0, 8)));
  for (size_t length = 0; length <= whole.Size(); ++length) {
    const MemoryFile file(Image().Raw(whole.Data(), length));
    WAVEFORMATEX format = {9, 9, 9, 9, 9, 9, 9};
    int64_t frames = -1, offset = -1;
    const HRESULT expected = length < 12 ? ZR_E_UNKNOWN_FORMAT : length < 54 ? ZR_E_FILE_READ : S_OK;
    EXPECT_EQ(iff_GetAIFFWfx(file, &format, &frames, &offset), expected) << length;
    EXPECT_EQ(frames == -1 && offset == -1 && format.nChannels == 9, FAILED(expected)) << length;
  }
  const MemoryFile bounded(Form("AIFF", Image().Add(Common(2, 6, 16)).Add(IffChunk("NAME", {}))));
  WAVEFORMATEX format;
  int64_t frames, offset;
  EXPECT_EQ(iff_GetAIFFWfx(bounded, &format, &frames, &offset), ZR_E_NOT_FOUND);
}

TEST(AiffFormat, IsReadByPath) {
  const DiskFile file(Form("AIFF", Image().Add(Common(2, 6, 16)).Add(Sound(0, 24))));
  int64_t frames = 0, offset = 0;
  WAVEFORMATEX* format = ZrGetFileWfx(file.Path(), &frames, &offset);
  ASSERT_NE(format, nullptr);
  EXPECT_EQ(+format->wFormatTag, 0xFE02);
  EXPECT_EQ(frames, 6);
  EXPECT_EQ(offset, 54);
  std::free(format);
  file.Write(Form("AIFF", Image().Add(Common(2, 6, 0)).Add(Sound(0, 24))));
  EXPECT_EQ(ZrGetFileWfx(file.Path(), nullptr, nullptr), nullptr) << "no whole bytes";
}

TEST(IffDelete, CutsAndCorrectsTheForm) {
  for (const size_t size : {0u, 3u, 4096u, 5001u}) {
    for (const size_t tail : {0u, 4088u, 9000u}) {
      const Image removed = IffChunk("NAME", Image().Ramp(size));
      const Image rest = Image().Add(Common(2, 6, 16)).Add(Sound(0, tail));
      const MemoryFile first(Form("AIFF", Image().Add(removed).Add(rest)));
      uint32_t bytes = 0;
      EXPECT_EQ(iff_DeleteChunk(first, ZrIffId("NAME"), &bytes), S_OK);
      EXPECT_EQ(bytes, removed.Size());
      EXPECT_EQ(first.Bytes(), Form("AIFF", rest).Bytes());
      const MemoryFile last(Form("AIFF", Image().Add(rest).Add(removed)));
      EXPECT_EQ(iff_DeleteChunk(last, ZrIffId("NAME"), nullptr), S_OK);
      EXPECT_EQ(last.Bytes(), Form("AIFF", rest).Bytes());
    }
  }
  const MemoryFile other(Form("8SVX", IffChunk("NAME", {})));
  EXPECT_EQ(iff_DeleteChunk(other, ZrIffId("NAME"), nullptr), ZR_E_UNKNOWN_FORMAT);
  const MemoryFile file(Form("AIFF", Image().Add(IffChunk("NAME", {})).Add(Sound(0, 2))));
  plat::FailAllocation(1);
  EXPECT_EQ(iff_DeleteChunk(file, ZrIffId("NAME"), nullptr), E_OUTOFMEMORY);
  plat::FailAllocation(0);
}

TEST(IffMarkers, ArePassedByTheirNames) {
  Image markers = Image().Be(4, 2);
  markers.Be(1, 2).Be(100, 4).Raw({3}).Text("odd");           // With its length byte: even.
  markers.Be(2, 2).Be(200, 4).Raw({4}).Text("even").Fill(1);  // One pad byte.
  markers.Be(3, 2).Be(0xFFFFFFFF, 4).Raw({0}).Fill(1);
  markers.Be(4, 2).Be(400, 4).Raw({255}).Fill(255, 'x');
  const Image whole = Form("AIFF", IffChunk("MARK", markers));
  const MemoryFile file(whole);
  struct Row {
    uint16_t id;
    uint32_t position;
    uint8_t nameBytes;
    uint64_t name;
  };
  for (const Row& row : {Row{1, 100, 3, 29}, {2, 200, 4, 39}, {3, 0xFFFFFFFF, 0, 51}, {4, 400, 255, 59}}) {
    tIFFMARKER marker;
    EXPECT_EQ(iff_FindMarker(file, &marker, row.id), S_OK);
    EXPECT_EQ(+marker.id, row.id);
    EXPECT_EQ(+marker.position, row.position);
    EXPECT_EQ(marker.nameBytes, row.nameBytes);
    EXPECT_EQ(file.Position(), row.name);
  }
  tIFFMARKER marker = {9, 9, 9};
  EXPECT_EQ(iff_FindMarker(file, &marker, 5), ZR_E_NOT_FOUND);
  EXPECT_EQ(+marker.id, 9);
  const MemoryFile none(Form("AIFF", {}));
  EXPECT_EQ(iff_FindMarker(none, &marker, 5), ZR_E_NOT_FOUND);

  // A count that is too high ends with the chunk; a chunk that claims more than the file has, with the file.
  Image one = Image().Be(0xFFFF, 2).Be(1, 2).Be(1, 4).Raw({1, 'a'});
  const MemoryFile counted(Form("AIFF", Image().Add(IffChunk("MARK", one)).Add(IffChunk("XXXX", Image().Ramp(40)))));
  EXPECT_EQ(iff_FindMarker(counted, &marker, 0x0102), ZR_E_NOT_FOUND);
  const MemoryFile cut(Image().Text("FORM").Be(99, 4).Text("AIFF").Text("MARK").Be(1000, 4).Add(one).Fill(6));
  EXPECT_EQ(iff_FindMarker(cut, &marker, 5), ZR_E_NO_RIFF_HEADER);
  const MemoryFile noCount(Image().Text("FORM").Be(99, 4).Text("AIFF").Text("MARK").Be(1000, 4).Fill(1));
  EXPECT_EQ(iff_FindMarker(noCount, &marker, 5), ZR_E_FILE_READ);
}

TEST(AiffRate, GoesThereAndBack) {
  // The 80-bit numbers by hand: rate = mantissa / 2^63 x 2^(exponent - 16383).
  struct Row {
    uint32_t rate;
    uint16_t exponent;
    uint16_t mantissa[4];
    uint32_t back;
  };
  const Row rows[] = {
      {0, 16383, {0, 0, 0, 0}, 0},
      {1, 16383, {0x8000, 0, 0, 0}, 1},
      {2, 16384, {0x8000, 0, 0, 0}, 2},
      {8000, 16395, {0xFA00, 0, 0, 0}, 8000},
      {44100, 16398, {0xAC44, 0, 0, 0}, 44100},
      {48000, 16398, {0xBB80, 0, 0, 0}, 48000},
      {88200, 16399, {0xAC44, 0, 0, 0}, 88200},
      {96000, 16399, {0xBB80, 0, 0, 0}, 96000},
      {96001, 16399, {0xBB80, 0x8000, 0, 0}, 96001},
      {192000, 16400, {0xBB80, 0, 0, 0}, 192000},
      {192002, 16400, {0xBB80, 0x8000, 0, 0}, 96001},
      {352800, 16401, {0xAC44, 0, 0, 0}, 176400},
      {384000, 16401, {0xBB80, 0, 0, 0}, 192000},
      {0xFFFFFFFF, 16414, {0xFFFF, 0xFFFF, 0, 0}, 131071},
  };
  for (const Row& row : rows) {
    uint16_t exponent = 0;
    uint16_t mantissa[4] = {9, 9, 9, 9};
    aiff_CreateRate(row.rate, &exponent, mantissa);
    EXPECT_EQ(exponent, row.exponent) << row.rate;
    EXPECT_TRUE(std::equal(mantissa, mantissa + 4, row.mantissa)) << row.rate;
    EXPECT_EQ(aiff_ConvertRate(exponent, mantissa), row.back) << row.rate;
  }
  const uint16_t rate44100[4] = {0xAC44, 0, 0, 0};
  EXPECT_EQ(aiff_ConvertRate(0xC00E, rate44100), 44100u) << "negative";
  EXPECT_EQ(aiff_ConvertRate(0xFFFF, rate44100), 44100u);
  const uint16_t fraction[4] = {0xAC44, 0x7FFF, 0xFFFF, 0xFFFF};
  EXPECT_EQ(aiff_ConvertRate(16398, fraction), 44100u) << "44100.49... is truncated";
  // Below the bias the number of doublings wraps: a half is doubled like any other until it is above 96000.
  const uint16_t one[4] = {0x8000, 0, 0, 0};
  EXPECT_EQ(aiff_ConvertRate(16382, one), 131072u);
  const uint16_t zero[4] = {};
  EXPECT_EQ(aiff_ConvertRate(0, zero), 0u);
  EXPECT_EQ(aiff_ConvertRate(0x7FFF, zero), 0u);
  EXPECT_EQ(aiff_ConvertRate(16398, nullptr), 0u);
  for (uint32_t rate = 1; rate <= 192000; ++rate) {
    uint16_t exponent = 0;
    uint16_t mantissa[4];
    aiff_CreateRate(rate, &exponent, mantissa);
    ASSERT_EQ(aiff_ConvertRate(exponent, mantissa), rate) << "every rate up to 192000 survives";
  }
}

}  // namespace
