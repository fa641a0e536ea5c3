// SPDX-License-Identifier: Apache-2.0
// Writes audio formats in words.
#include "audio/format_names.h"
#include "kernel/strings.h"
#include "marlo110k/formattext.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

// Each step is a thousand of the one before.
constexpr Text kBitRateUnits[] = {Text::kRateBits, Text::kRateKilobits, Text::kRateMegabits, Text::kRateGigabits,
                                  Text::kRateTerabits};

/// The texts of one sample type.
struct SampleTypeText {
  uint32_t sampleType;
  Text name;          ///< A format for the bits where it has room for them.
  uint32_t bits;      ///< As the name tells them.
  uint32_t wordBits;  ///< As the depth tells them.
  uint32_t precisionBits;
};

constexpr SampleTypeText kSampleTypeTexts[] = {
    {ZRSAMPLETYPE_PCM8, Text::kFormatBits, 8, 8, 8},
    {ZRSAMPLETYPE_PCM16, Text::kFormatBits, 16, 16, 16},
    {ZRSAMPLETYPE_PCM24, Text::kFormatBits, 24, 24, 24},
    {ZRSAMPLETYPE_PCM32, Text::kFormatBits, 32, 32, 32},
    {ZRSAMPLETYPE_FLOAT32, Text::kFormatFloatBits, 32, 32, 24},
    {ZRSAMPLETYPE_FLOAT64, Text::kFormatFloatBits, 64, 64, 53},
    {ZRSAMPLETYPE_PCM24UNPACKED, Text::kFormatUnpackedBits, 24, 24, 24},
    {ZRSAMPLETYPE_PCM8SIGNED, Text::kFormatSignedBits, 8, 8, 8},
    {ZRSAMPLETYPE_PCM16BE, Text::kFormatBigEndianBits, 16, 16, 16},
    {ZRSAMPLETYPE_PCM24BE, Text::kFormatBigEndianBits, 24, 24, 24},
    {ZRSAMPLETYPE_PCM32BE, Text::kFormatBigEndianBits, 32, 32, 32},
    {ZRSAMPLETYPE_PCM16RA, Text::kFormatRightAlignedBits, 16, 32, 16},
    {ZRSAMPLETYPE_PCM24RA, Text::kFormatRightAlignedBits, 24, 32, 24},
};

const SampleTypeText* FindSampleType(uint32_t sampleType) noexcept {
  for (const SampleTypeText& row : kSampleTypeTexts) {
    if (row.sampleType == sampleType) return &row;
  }
  return nullptr;
}

/// Builds a text piece by piece in the caller's buffer.
class TextBuilder {
 public:
  TextBuilder(char16_t* buffer, uint32_t size) noexcept : buffer_(buffer), size_(buffer != nullptr ? size : 0) {
    if (size_ > 0) buffer_[0] = 0;
  }
  template <class... Arguments>
  void Add(const char16_t* format, Arguments... arguments) noexcept {
    if (size_ - used_ <= 1) return;
    uint32_t written = 0;
    ZrCchPrintF(buffer_ + used_, size_ - used_, &written, format, arguments...);
    used_ += written;
  }
  char16_t* Text() const noexcept { return buffer_; }

 private:
  char16_t* buffer_;
  uint32_t size_;
  uint32_t used_ = 0;
};

void AddChannels(TextBuilder* builder, uint32_t channels, uint32_t mask) noexcept {
  const SpeakerName name = FindSpeakerName(channels, mask);
  if (name.text == nullptr) return builder->Add(KernelText(Text::kFormatChannels), channels);
  builder->Add(u"%s", name.text);
  if (name.withLfe) builder->Add(u"%s", LfeSuffix());
}

/// The layouts that attributes name: by number alone up to two channels, surround by its speakers.
void AddAttributeChannels(TextBuilder* builder, const WAVEFORMATEX* wfx) noexcept {
  constexpr uint32_t kSevenOneSide = 0x63F;
  const uint32_t channels = wfx->nChannels;
  uint32_t mask = 0;
  if (wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE) {
    mask = reinterpret_cast<const WAVEFORMATEXTENSIBLE*>(wfx)->dwChannelMask;
  }
  if (channels == 8 && mask == kSevenOneSide) mask = 0xFF;
  const bool isSurround = (channels == 6 && (mask == 0x3F || mask == 0x60F)) || (channels == 8 && mask == 0xFF);
  AddChannels(builder, channels, isSurround ? mask : 0);
}

/// A bit rate in the largest unit of which it holds two, with one decimal below 100.
void AddBitRate(TextBuilder* builder, uint64_t bitsPerSecond) noexcept {
  constexpr uint64_t kThousand = 1000;
  uint64_t unit = 1;
  size_t name = 0;
  while (name + 1 < std::size(kBitRateUnits) && bitsPerSecond >= 2 * unit * kThousand) {
    unit *= kThousand;
    ++name;
  }
  const auto rounded = static_cast<uint32_t>((bitsPerSecond + unit / 2) / unit);
  const auto tenths = static_cast<uint32_t>((bitsPerSecond * 10 + unit / 2) / unit);
  const char16_t* unitText = KernelText(kBitRateUnits[name]);
  if (name > 0 && rounded < 100 && tenths % 10 != 0) {
    builder->Add(u"%.1z %s", tenths, unitText);
  } else {
    builder->Add(u"$d %s", rounded, unitText);
  }
}

/// The PCM format that a compressed one unpacks to.
_zrwaveformat PcmOf(const _zrwaveformat& format) noexcept {
  _zrwaveformat pcm;
  pcm.Init(format.samplesPerSec, format.bitsPerSample <= 16 ? ZRSAMPLETYPE_PCM16 : ZRSAMPLETYPE_PCM24, format.channels,
           format.channelMask, 32);
  return pcm;
}

void AddSamples(TextBuilder* builder, const _zrwaveformat& format, uint32_t flags, const char16_t* separator) noexcept {
  char16_t text[64];
  if (format.sampleType != ZRSAMPLETYPE_NONE) {
    if ((flags & ZRFORMATTEXT_BITDEPTH) != 0) {
      ZrAudio_GetBitDepthText(format.sampleType, text, std::size(text), 1);
    } else {
      ZrAudio_GetSampleTypeText(format.sampleType, text, std::size(text));
    }
  } else if (format.bitsPerSample != 0) {
    ZrCchPrintF(text, std::size(text), nullptr, KernelText(Text::kFormatBits), uint32_t{format.bitsPerSample});
  } else {
    return;
  }
  builder->Add(u"%s%s", separator, text);
}

void AddCompression(TextBuilder* builder, const _zrwaveformat& format, uint32_t flags,
                    const char16_t* separator) noexcept {
  const uint16_t tag = format.FormatTag();
  const bool isPlain = tag == WAVE_FORMAT_PCM || tag == WAVE_FORMAT_IEEE_FLOAT;
  if ((flags & ZRFORMATTEXT_NO_COMPRESSION) != 0) return;
  if ((flags & ZRFORMATTEXT_BITDEPTH) != 0 && isPlain) return;
  char16_t name[64];
  const int32_t shortName = (flags & ZRFORMATTEXT_LONG_NAMES) != 0 ? 0 : 1;
  if (ZrAudio_GetCompressionTypeName(tag, name, std::size(name), shortName) != 0 || name[0] == 0) return;
  builder->Add(u"%s%s", separator, name);
}

void AddFormat(TextBuilder* builder, const _zrwaveformat& format, uint32_t flags) noexcept {
  char16_t separator[16];
  ZrCchPrintF(separator, std::size(separator), nullptr, u"$, ");
  if (format.IsCompressed() && (flags & ZRFORMATTEXT_BITRATE_FIRST) != 0) {
    const uint64_t bitRate = uint64_t{format.avgBytesPerSec} * 8;
    const uint64_t pcmRate = uint64_t{format.bitsPerSample} * format.channels * format.samplesPerSec;
    if (bitRate != 0 && bitRate != pcmRate) {
      AddBitRate(builder, bitRate);
      builder->Add(u"%s", separator);
    }
  }
  builder->Add(KernelText(Text::kFormatRate), format.samplesPerSec);
  AddSamples(builder, format, flags, separator);
  builder->Add(u"%s", separator);
  AddChannels(builder, format.channels, format.channelMask);
  AddCompression(builder, format, flags, separator);
}

/// The name of a tag that the library writes itself.
Text FindTagText(uint16_t tag) noexcept {
  switch (tag) {
    case WAVE_FORMAT_PCM:
      return Text::kFormatPcm;
    case WAVE_FORMAT_IEEE_FLOAT:
      return Text::kFormatPcmFloat;
    case ZR_FORMAT_PCM_UNPACKED:
      return Text::kFormatPcmUnpacked;
    case ZR_FORMAT_PCM_SIGNED:
      return Text::kFormatPcmSigned;
    case ZR_FORMAT_PCM_BIG_ENDIAN:
      return Text::kFormatPcmBigEndian;
    default:
      return Text::kFormatUnknown;
  }
}

}  // namespace
}  // namespace marlo

char16_t* ZrAudio_GetSampleTypeText(uint32_t sampleType, char16_t* buffer, uint32_t size) noexcept {
  marlo::TextBuilder builder(buffer, size);
  if (const auto* row = marlo::FindSampleType(sampleType)) builder.Add(marlo::KernelText(row->name), row->bits);
  return builder.Text();
}

char16_t* ZrAudio_GetBitDepthText(uint32_t sampleType, char16_t* buffer, uint32_t size, int32_t precision) noexcept {
  marlo::TextBuilder builder(buffer, size);
  if (const auto* row = marlo::FindSampleType(sampleType)) {
    builder.Add(marlo::KernelText(marlo::Text::kFormatBits), precision != 0 ? row->precisionBits : row->wordBits);
  }
  return builder.Text();
}

char16_t* ZrAudio_GetChannelsText(uint32_t channels, uint32_t mask, char16_t* buffer, uint32_t size) noexcept {
  marlo::TextBuilder builder(buffer, size);
  marlo::AddChannels(&builder, channels, mask);
  return builder.Text();
}

int32_t ZrAudio_GetCompressionTypeName(uint16_t tag, char16_t* buffer, uint32_t size, int32_t shortName) noexcept {
  marlo::TextBuilder builder(buffer, size);
  const char16_t* name = shortName == 0 ? marlo::LongCompressionName(tag) : nullptr;
  if (name == nullptr) name = marlo::ShortCompressionName(tag);
  if (name == nullptr) {
    const uint16_t canonical = ZrAudio_ConvertToCanonicalWaveFormatTag(tag);
    if (canonical != tag) name = marlo::ShortCompressionName(canonical);
  }
  if (name != nullptr) {
    builder.Add(u"%s", name);
    return 0;
  }
  char16_t number[32];
  ZrCchPrintF(number, std::size(number), nullptr, u"0x%d", uint32_t{tag});  // decimal, as hosts know it
  builder.Add(shortName == 0 ? marlo::KernelText(marlo::Text::kFormatCompression) : u"%s", number);
  return 1;
}

HRESULT ZrAudio_GetTagText(uint16_t tag, char16_t* buffer, uint32_t size) noexcept {
  const marlo::Text text = marlo::FindTagText(tag);
  plat::CopyText(buffer, size, marlo::KernelText(text));
  return text != marlo::Text::kFormatUnknown ? S_OK : E_FAIL;
}

HRESULT ZrAudio_GetAttribsText(const WAVEFORMATEX* wfx, char16_t* buffer, uint32_t size) noexcept {
  if (wfx == nullptr || ZrAudio_IsCompressed(wfx) != 0) {
    plat::CopyText(buffer, size, marlo::KernelText(marlo::Text::kFormatUnknown));
    return E_FAIL;
  }
  char16_t channels[64];
  marlo::TextBuilder channelBuilder(channels, std::size(channels));
  marlo::AddAttributeChannels(&channelBuilder, wfx);
  const bool isFloat = ZrAudio_GetWaveFormatTag(wfx) == WAVE_FORMAT_IEEE_FLOAT;
  marlo::TextBuilder builder(buffer, size);
  builder.Add(marlo::KernelText(isFloat ? marlo::Text::kFormatFloatAttributes : marlo::Text::kFormatAttributes),
              wfx->nSamplesPerSec, uint32_t{wfx->wBitsPerSample}, channels);
  return S_OK;
}

HRESULT ZrAudio_GetAttribsText(const _zrwaveformat* format, char16_t* buffer, uint32_t size) noexcept {
  if (format == nullptr) return ZrAudio_GetAttribsText(static_cast<const WAVEFORMATEX*>(nullptr), buffer, size);
  const _zrwaveformat_wfxecopyhelper wfx(format);
  return ZrAudio_GetAttribsText(&wfx.Format, buffer, size);
}

char16_t* ZrAudio_GetFormatText(const _zrwaveformat* format, char16_t* buffer, uint32_t size, uint32_t flags) noexcept {
  marlo::TextBuilder builder(buffer, size);
  if (format == nullptr) return builder.Text();
  if (format->IsCompressed() && (flags & ZRFORMATTEXT_AS_PCM) != 0) {
    marlo::AddFormat(&builder, marlo::PcmOf(*format), flags);
  } else if (format->IsCompressed() && (flags & ZRFORMATTEXT_PLATFORM_TEXT) != 0) {
    ZrAudio_GetAttribsText(format, buffer, size);
  } else {
    marlo::AddFormat(&builder, *format, flags);
  }
  return builder.Text();
}
