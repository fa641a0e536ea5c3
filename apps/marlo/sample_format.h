// SPDX-License-Identifier: Apache-2.0
// File formats and sample types by the names that the command line and the output use.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "marlo110k/waveformat.h"

namespace host {

/// Aifc is the form of AIFF with little-endian samples.
enum class Container { kWave, kWave64, kAiff, kAifc };

/// "wave", "wave64", "aiff", "aifc".
const char* NameOf(Container container);
/// The format that a file name's extension asks for: wav or wave, w64, aif or aiff, aifc.
std::optional<Container> ContainerOfName(std::string_view path);
/// The same for an output; throws UsageError for another extension.
Container ContainerOfOutput(const std::string& path);

/// "pcm8" to "float64" as the command line takes them; the type in little-endian form.
std::optional<ZRSAMPLETYPE> SampleTypeOfName(std::string_view name);
/// The same for the value of --type; throws UsageError.
ZRSAMPLETYPE SampleTypeOfOption(const std::string& value);
/// The name of any type that a file can hold, such as "pcm16" or "pcm24be"; "unknown" for others.
const char* NameOf(ZRSAMPLETYPE type);
/// The layout in which a container holds samples of the same depth: big-endian in AIFF, signed 8-bit in
/// AIFF and AIFC, packed everywhere. None for float samples in AIFF and AIFC, which hold integers only.
std::optional<ZRSAMPLETYPE> TypeInContainer(ZRSAMPLETYPE type, Container container);
/// The same; throws a Failure about `path` where the container can't hold the type.
ZRSAMPLETYPE RequireTypeInContainer(ZRSAMPLETYPE type, Container container, const std::string& path);

/// A descriptor of uncompressed samples. Throws a Failure when a frame would pass 65535 bytes.
_zrwaveformat MakeFormat(uint32_t rate, ZRSAMPLETYPE type, uint16_t channels, uint32_t mask);

}  // namespace host
