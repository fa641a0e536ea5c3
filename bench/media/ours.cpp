// SPDX-License-Identifier: Apache-2.0
// How fast are chunks walked, in a file and in memory, and how fast is a wave file read to float?
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "harness/harness.h"
#include "marlo110k/mriff.h"
#include "marlo110k/riff.h"
#include "marlo110k/samples.h"
#include "marlo110k/wavefile.h"
#include "media/peers.h"

namespace {

using bench::Question;

std::string TempPath(const char* name) {
  const char* folder = std::getenv("MARLO_TEMP_DIR");
  return std::string(folder != nullptr ? folder : "/tmp") + "/marlo_bench_" + name;
}

std::u16string Wide(const std::string& text) { return {text.begin(), text.end()}; }

void Put32(std::vector<uint8_t>* image, uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) image->push_back(static_cast<uint8_t>(value >> shift));
}

/// A RIFF of `chunks` chunks of 72 data bytes.
std::vector<uint8_t> Chunks(uint32_t chunks) {
  constexpr uint32_t kDataBytes = 72;
  std::vector<uint8_t> image;
  Put32(&image, ZrChunkId("RIFF"));
  Put32(&image, 4 + chunks * (8 + kDataBytes));
  Put32(&image, ZrChunkId("TEST"));
  for (uint32_t i = 0; i < chunks; ++i) {
    Put32(&image, ZrChunkId("many"));
    Put32(&image, kDataBytes);
    image.insert(image.end(), kDataBytes, static_cast<uint8_t>(i));
  }
  return image;
}

void Write(const std::string& path, const void* bytes, size_t count) {
  std::ofstream(path, std::ios::binary).write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
}

void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "wrong: %s\n", what);
  std::exit(2);
}

bool AskWalk(uint32_t chunks) {
  const std::string path = TempPath("chunks");
  std::vector<uint8_t> image = Chunks(chunks);
  Write(path, image.data(), image.size());
  const std::string count = std::to_string(chunks) + " chunks";
  bool met = true;

  plat::File* file = plat::OpenFile(Wide(path).c_str(), plat::kReadAccess, plat::kShareRead, plat::kOpenExisting);
  const int bare = bench_media::OpenBare(path);
  const auto fileWalk = [file] {
    uint32_t bound = 0;
    Check(riff_FindChunkHeaderInRIFF(file, ZrChunkId("none"), nullptr, &bound) == ZR_E_NOT_FOUND, "walk of a file");
  };
  Question inFile("Walk " + count + " of a file", "chunk");
  inFile.Ours({"riff_FindChunkHeaderInRIFF", fileWalk, static_cast<double>(chunks)});
  inFile.Peer({"bare pread loop",
               [bare, chunks] { Check(bench_media::BareFileWalk(bare) == chunks, "bare walk of a file"); },
               static_cast<double>(chunks)});
  inFile.Goal(0, 0.95);
  met = inFile.Print() && met;
  bench_media::CloseBare(bare);
  plat::CloseFile(file);

  _tMRIFF cursor;
  const auto bytes = static_cast<uint32_t>(image.size());
  Check(mriff_Init(&cursor, image.data(), bytes, bytes) == S_OK, "cursor");
  Question inMemory("Walk " + count + " of a block", "chunk");
  inMemory.Ours({"mriff_FindChunkHeader",
                 [&cursor] {
                   mriff_SeekDataStart(&cursor);
                   Check(mriff_FindChunkHeader(&cursor, ZrChunkId("none"), nullptr, nullptr) == ZR_E_FILE_READ,
                         "walk of a block");
                   bench::Use(&cursor);
                 },
                 static_cast<double>(chunks)});
  inMemory.Peer({"pointer loop",
                 [&image, chunks] {
                   Check(bench_media::BarePointerWalk(image.data(), image.data() + image.size()) == chunks, "pointer");
                 },
                 static_cast<double>(chunks)});
  inMemory.Goal(-1, 100e6);
  met = inMemory.Print() && met;
  std::remove(path.c_str());
  return met;
}

/// Reads a file through the format that it states, in blocks of 256 KiB of floats.
void ReadToFloat(const std::u16string& path, std::vector<float>* block, std::vector<uint8_t>* raw) {
  int64_t frames = 0;
  int64_t dataOffset = 0;
  WAVEFORMATEX* format = ZrGetFileWfx(path.c_str(), &frames, &dataOffset);
  Check(format != nullptr, "format");
  const ZRAUDIOCOPYFUNCTION copy = ZrAudio_GetCopyFunction2(ZRSAMPLETYPE_FLOAT32, ZrAudio_GetSampleType(format));
  plat::File* file = plat::OpenFile(path.c_str(), plat::kReadAccess, plat::kShareRead, plat::kOpenExisting);
  plat::SeekFile(file, dataOffset, plat::kSeekStart, nullptr);
  int64_t samplesLeft = frames * format->nChannels;
  const auto sampleBytes = static_cast<uint32_t>(format->wBitsPerSample / 8);
  while (samplesLeft > 0) {
    const int64_t samples = std::min(samplesLeft, static_cast<int64_t>(block->size()));
    uint32_t got = 0;
    Check(ZrReadFile(file, raw->data(), static_cast<uint32_t>(samples) * sampleBytes, &got) == 1, "read");
    copy(block->data(), raw->data(), got / sampleBytes, 1.0f);
    samplesLeft -= samples;
  }
  plat::CloseFile(file);
  std::free(format);
  bench::Use(block->data());
}

bool AskRead() {
  constexpr uint32_t kSamples = 48000 * 2 * 600;
  const std::string path = TempPath("read.wav");
  const std::u16string wide = Wide(path);
  const WAVEFORMATEX format = {WAVE_FORMAT_PCM, 2, 48000, 192000, 4, 16, 0};
  Check(ZrInitializeWav(wide.c_str(), &format, ZRWAVEFILE_ALWAYS) == S_OK, "new file");
  std::vector<int16_t> samples(kSamples);
  uint32_t state = 1;
  for (int16_t& sample : samples) {
    state = state * 1664525 + 1013904223;
    sample = static_cast<int16_t>(state >> 16);
  }
  plat::File* file = plat::OpenFile(wide.c_str(), plat::kReadWriteAccess, plat::kShareRead, plat::kOpenExisting);
  plat::SeekFile(file, 0, plat::kSeekEnd, nullptr);
  plat::WriteFile(file, samples.data(), kSamples * 2, nullptr);
  riff_UpdateRIFFSize(file, kSamples * 2);
  plat::SeekFile(file, 38, plat::kSeekStart, nullptr);
  riff_WriteChunkHeader(file, ZrChunkId("data"), kSamples * 2);
  plat::CloseFile(file);
  samples = {};

  std::vector<float> block((256 << 10) / sizeof(float));
  std::vector<uint8_t> raw(block.size() * 2);
  Question question("Read 10 minutes of stereo PCM16 from the page cache to float, 256 KiB blocks", "sample");
  question.Ours({"ZrGetFileWfx, ZrReadFile and the copy function", [&] { ReadToFloat(wide, &block, &raw); }, kSamples});
  if (const auto sndfile = bench_media::SndfileRead(path)) {
    question.Peer({"libsndfile sf_readf_float", sndfile, kSamples});
    question.Goal(0, 5);
  } else {
    question.Absent("libsndfile");
  }
  const bool met = question.Print();
  std::remove(path.c_str());
  return met;
}

}  // namespace

int main() {
  bool met = true;
  for (const uint32_t chunks : {1000u, 50000u, 1000000u}) met = AskWalk(chunks) && met;
  met = AskRead() && met;
  return met ? 0 : 1;
}
