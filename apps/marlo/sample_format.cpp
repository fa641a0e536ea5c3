// SPDX-License-Identifier: Apache-2.0
// Tables of containers and sample types.
#include "sample_format.h"

#include "errors.h"

namespace host {
namespace {

struct Extension {
  std::string_view text;
  Container container;
};
constexpr Extension kExtensions[] = {
    {"wav", Container::kWave}, {"wave", Container::kWave}, {"w64", Container::kWave64},
    {"aif", Container::kAiff}, {"aiff", Container::kAiff}, {"aifc", Container::kAifc},
};

struct TypeRow {
  ZRSAMPLETYPE type;
  const char* name;
  ZRSAMPLETYPE littleEndian;
  ZRSAMPLETYPE aiff;
  ZRSAMPLETYPE aifc;
};
constexpr TypeRow kTypes[] = {
    {ZRSAMPLETYPE_PCM8, "pcm8", ZRSAMPLETYPE_PCM8, ZRSAMPLETYPE_PCM8SIGNED, ZRSAMPLETYPE_PCM8SIGNED},
    {ZRSAMPLETYPE_PCM16, "pcm16", ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM16BE, ZRSAMPLETYPE_PCM16},
    {ZRSAMPLETYPE_PCM24, "pcm24", ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM24BE, ZRSAMPLETYPE_PCM24},
    {ZRSAMPLETYPE_PCM32, "pcm32", ZRSAMPLETYPE_PCM32, ZRSAMPLETYPE_PCM32BE, ZRSAMPLETYPE_PCM32},
    {ZRSAMPLETYPE_FLOAT32, "float32", ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_NONE, ZRSAMPLETYPE_NONE},
    {ZRSAMPLETYPE_FLOAT64, "float64", ZRSAMPLETYPE_FLOAT64, ZRSAMPLETYPE_NONE, ZRSAMPLETYPE_NONE},
    {ZRSAMPLETYPE_PCM24UNPACKED, "pcm24unpacked", ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM24BE, ZRSAMPLETYPE_PCM24},
    {ZRSAMPLETYPE_PCM8SIGNED, "pcm8signed", ZRSAMPLETYPE_PCM8, ZRSAMPLETYPE_PCM8SIGNED, ZRSAMPLETYPE_PCM8SIGNED},
    {ZRSAMPLETYPE_PCM16BE, "pcm16be", ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM16BE, ZRSAMPLETYPE_PCM16},
    {ZRSAMPLETYPE_PCM24BE, "pcm24be", ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM24BE, ZRSAMPLETYPE_PCM24},
    {ZRSAMPLETYPE_PCM32BE, "pcm32be", ZRSAMPLETYPE_PCM32, ZRSAMPLETYPE_PCM32BE, ZRSAMPLETYPE_PCM32},
};

const TypeRow* FindType(ZRSAMPLETYPE type) {
  for (const TypeRow& row : kTypes) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

bool EqualWithoutCase(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  for (size_t index = 0; index < left.size(); ++index) {
    const char lower = left[index] >= 'A' && left[index] <= 'Z' ? static_cast<char>(left[index] + 32) : left[index];
    if (lower != right[index]) return false;
  }
  return true;
}

}  // namespace

const char* NameOf(Container container) {
  constexpr const char* kNames[] = {"wave", "wave64", "aiff", "aifc"};
  return kNames[static_cast<int>(container)];
}

std::optional<Container> ContainerOfName(std::string_view path) {
  const size_t point = path.rfind('.');
  if (point == std::string_view::npos) return std::nullopt;
  for (const Extension& extension : kExtensions) {
    if (EqualWithoutCase(path.substr(point + 1), extension.text)) return extension.container;
  }
  return std::nullopt;
}

Container ContainerOfOutput(const std::string& path) {
  const std::optional<Container> container = ContainerOfName(path);
  if (!container) throw UsageError("The name " + path + " must end in .wav, .w64, .aiff or .aifc.");
  return *container;
}

std::optional<ZRSAMPLETYPE> SampleTypeOfName(std::string_view name) {
  for (const TypeRow& row : kTypes) {
    if (row.type == row.littleEndian && name == row.name) return row.type;
  }
  return std::nullopt;
}

ZRSAMPLETYPE SampleTypeOfOption(const std::string& value) {
  const std::optional<ZRSAMPLETYPE> type = SampleTypeOfName(value);
  if (!type) {
    throw UsageError("\"" + value + "\" is none of pcm8, pcm16, pcm24, pcm32, float32 and float64.");
  }
  return *type;
}

const char* NameOf(ZRSAMPLETYPE type) {
  const TypeRow* row = FindType(type);
  return row ? row->name : "unknown";
}

std::optional<ZRSAMPLETYPE> TypeInContainer(ZRSAMPLETYPE type, Container container) {
  const TypeRow* row = FindType(type);
  if (!row) return std::nullopt;
  const ZRSAMPLETYPE result = container == Container::kAiff   ? row->aiff
                              : container == Container::kAifc ? row->aifc
                                                              : row->littleEndian;
  if (result == ZRSAMPLETYPE_NONE) return std::nullopt;
  return result;
}

ZRSAMPLETYPE RequireTypeInContainer(ZRSAMPLETYPE type, Container container, const std::string& path) {
  const std::optional<ZRSAMPLETYPE> result = TypeInContainer(type, container);
  if (!result) {
    throw Failure(ZR_E_UNSUPPORTED_MEDIA, path,
                  "AIFF files hold integer samples only; choose one of the pcm types with --type.");
  }
  return *result;
}

_zrwaveformat MakeFormat(uint32_t rate, ZRSAMPLETYPE type, uint16_t channels, uint32_t mask) {
  if (uint32_t{ZrAudio_BytesFromSampleType(type)} * channels > UINT16_MAX) {
    throw Failure(ZR_E_UNSUPPORTED_MEDIA, "", "There are too many channels for one frame of these samples.");
  }
  _zrwaveformat format;
  format.Init(rate, type, channels, mask, sizeof format);
  return format;
}

}  // namespace host
