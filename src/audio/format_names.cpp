// SPDX-License-Identifier: Apache-2.0
// The tables of compression and speaker names.
#include "audio/format_names.h"

#include <algorithm>
#include <iterator>

#include "kernel/strings.h"

namespace marlo {
namespace {

struct NameRow {
  uint16_t tag;
  zrlang_t name;
};

// Both tables are sorted by tag.
constinit NameRow longNames[] = {
    {0x0003, English(u"IEEE Float")},
    {0x0050, English(u"MPEG Audio")},
    {0x0055, English(u"MPEG Layer 3")},
    {0x0092, English(u"Dolby AC3")},
    {0x0161, English(u"Windows Media Audio 9")},
    {0x0162, English(u"Windows Media Audio 9 Professional")},
    {0x0163, English(u"Windows Media Audio Lossless")},
    {0x674F, English(u"Ogg Vorbis 1")},
    {0x6750, English(u"Ogg Vorbis 2")},
    {0x6751, English(u"Ogg Vorbis 3")},
    {0x676F, English(u"Ogg Vorbis 1+")},
    {0x6770, English(u"Ogg Vorbis 2+")},
    {0x6771, English(u"Ogg Vorbis 3+")},
    {0xA106, English(u"MPEG-4 Advanced Audio Coding")},
    {0xFE00, English(u"PCM Unpacked")},
    {0xFE01, English(u"PCM Signed")},
    {0xFE02, English(u"PCM Big Endian")},
    {0xFE03, English(u"PCM Right Aligned")},
};

constinit NameRow shortNames[] = {
    {0x0001, English(u"PCM")},          {0x0002, English(u"ADPCM")},        {0x0003, English(u"Float")},
    {0x0006, English(u"ALaw")},         {0x0007, English(u"uLaw")},         {0x000A, English(u"WMA Voice")},
    {0x000B, English(u"RT Voice")},     {0x0022, English(u"TrueSpeech")},   {0x0050, English(u"MPEG")},
    {0x0055, English(u"MP3")},          {0x0062, English(u"Voxware")},      {0x0092, English(u"AC3")},
    {0x0160, English(u"MS Audio")},     {0x0161, English(u"WMA")},          {0x0162, English(u"WMA Pro")},
    {0x0163, English(u"WMA Lossless")}, {0x0164, English(u"WMA SPDIF")},    {0x0200, English(u"ADPCM")},
    {0x0216, English(u"DV")},           {0x0401, English(u"IMC")},          {0x0500, English(u"On2 VP7")},
    {0x0501, English(u"On2 VP6")},      {0x2000, English(u"AC3")},          {0x2001, English(u"Dolby DTS")},
    {0x2002, English(u"RealAudio")},    {0x2004, English(u"RealAudio G2")}, {0x2005, English(u"RealAudio Music")},
    {0x2006, English(u"RealAudio 10")}, {0x2007, English(u"RealAudio 10")}, {0x3313, English(u"AVIS")},
    {0x6771, English(u"Ogg")},          {0xA106, English(u"AAC")},          {0xAAC0, English(u"LC-AAC")},
    {0xAAC1, English(u"HE-AAC")},       {0xAAC2, English(u"HE-AAC V2")},    {0xF1AC, English(u"FLAC")},
    {0xFE00, English(u"PCM")},          {0xFE01, English(u"PCM")},          {0xFE02, English(u"PCM")},
    {0xFE03, English(u"PCM")},          {0xFFCA, English(u"DV")},
};

template <size_t kRows>
const char16_t* FindName(const NameRow (&rows)[kRows], uint16_t tag) noexcept {
  const NameRow* found = std::lower_bound(std::begin(rows), std::end(rows), tag,
                                          [](const NameRow& row, uint16_t wanted) { return row.tag < wanted; });
  return found != std::end(rows) && found->tag == tag ? KernelText(found->name) : nullptr;
}

constinit zrlang_t mono = English(u"Mono");
constinit zrlang_t stereo = English(u"Stereo");
constinit zrlang_t fiveOne = English(u"5.1");
constinit zrlang_t sevenOne = English(u"7.1");
constinit zrlang_t oneZero = English(u"1/0 (C)");
constinit zrlang_t twoZero = English(u"2/0 (L, R)");
constinit zrlang_t threeZero = English(u"3/0 (L, C, R)");
constinit zrlang_t twoOne = English(u"2/1 (L, R, Ls)");
constinit zrlang_t threeOne = English(u"3/1 (L, C, R, Ls)");
constinit zrlang_t twoTwo = English(u"2/2 (L, R, Ls, Rs)");
constinit zrlang_t threeTwo = English(u"3/2 (L, C, R, Ls, Rs)");
constinit zrlang_t lfe = English(u" + LFE");

struct SpeakerRow {
  uint32_t channels;
  uint32_t mask;
  const zrlang_t* name;
  bool withLfe;
};

// The first row that fits counts.
constexpr SpeakerRow kSpeakers[] = {
    {1, 0x00, &mono, false},     {2, 0x00, &stereo, false},    {2, 0x03, &stereo, false},   {6, 0x3F, &fiveOne, false},
    {6, 0x60F, &fiveOne, false}, {8, 0xFF, &sevenOne, false},  {1, 0x04, &oneZero, false},  {2, 0x0C, &oneZero, true},
    {3, 0x0B, &twoZero, true},   {3, 0x07, &threeZero, false}, {4, 0x0F, &threeZero, true}, {3, 0x13, &twoOne, false},
    {4, 0x1B, &twoOne, true},    {4, 0x17, &threeOne, false},  {5, 0x1F, &threeOne, true},  {4, 0x33, &twoTwo, false},
    {5, 0x3B, &twoTwo, true},    {5, 0x37, &threeTwo, false},
};

}  // namespace

const char16_t* LongCompressionName(uint16_t tag) noexcept { return FindName(longNames, tag); }

const char16_t* ShortCompressionName(uint16_t tag) noexcept { return FindName(shortNames, tag); }

SpeakerName FindSpeakerName(uint32_t channels, uint32_t mask) noexcept {
  for (const SpeakerRow& row : kSpeakers) {
    if (row.channels == channels && row.mask == mask) return {KernelText(*row.name), row.withLfe};
  }
  return {nullptr, false};
}

const char16_t* LfeSuffix() noexcept { return KernelText(lfe); }

}  // namespace marlo
