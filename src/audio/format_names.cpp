// SPDX-License-Identifier: Apache-2.0
// The tables of compression and speaker names.
#include "audio/format_names.h"

#include <algorithm>
#include <iterator>

#include "kernel/strings.h"
#include "kernel/text_names.h"

namespace marlo {
namespace {

struct NameRow {
  uint16_t tag;
  Text name;
};

/// The names of one kind by tag, made from those of the catalogue: "compression.0055.long".
template <size_t kRows>
struct NameTable {
  NameRow rows[kRows];
};

constexpr std::u16string_view kPrefix = u"compression.";

constexpr size_t CountKind(std::u16string_view kind) {
  size_t count = 0;
  ForEachName(kPrefix, [&](std::u16string_view name, Text) { count += name.ends_with(kind) ? 1 : 0; });
  return count;
}

template <size_t kRows>
constexpr NameTable<kRows> MakeTable(std::u16string_view kind) {
  NameTable<kRows> table{};
  size_t row = 0;
  ForEachName(kPrefix, [&](std::u16string_view name, Text text) {
    if (name.ends_with(kind)) table.rows[row++] = {static_cast<uint16_t>(ParseNumber(name, 16)), text};
  });
  std::sort(std::begin(table.rows), std::end(table.rows),
            [](const NameRow& left, const NameRow& right) { return left.tag < right.tag; });
  return table;
}

constexpr auto kLongNames = MakeTable<CountKind(u".long")>(u".long");
constexpr auto kShortNames = MakeTable<CountKind(u".short")>(u".short");

template <size_t kRows>
const char16_t* FindName(const NameTable<kRows>& table, uint16_t tag) noexcept {
  const NameRow* end = std::end(table.rows);
  const NameRow* found = std::lower_bound(std::begin(table.rows), end, tag,
                                          [](const NameRow& row, uint16_t wanted) { return row.tag < wanted; });
  return found != end && found->tag == tag ? KernelText(found->name) : nullptr;
}

struct SpeakerRow {
  uint32_t channels;
  uint32_t mask;
  Text name;
  bool withLfe;
};

// The first row that fits counts.
constexpr SpeakerRow kSpeakers[] = {
    {1, 0x00, Text::kSpeakersMono, false},   {2, 0x00, Text::kSpeakersStereo, false},
    {2, 0x03, Text::kSpeakersStereo, false}, {6, 0x3F, Text::kSpeakers_5_1, false},
    {6, 0x60F, Text::kSpeakers_5_1, false},  {8, 0xFF, Text::kSpeakers_7_1, false},
    {1, 0x04, Text::kSpeakers_1_0, false},   {2, 0x0C, Text::kSpeakers_1_0, true},
    {3, 0x0B, Text::kSpeakers_2_0, true},    {3, 0x07, Text::kSpeakers_3_0, false},
    {4, 0x0F, Text::kSpeakers_3_0, true},    {3, 0x13, Text::kSpeakers_2_1, false},
    {4, 0x1B, Text::kSpeakers_2_1, true},    {4, 0x17, Text::kSpeakers_3_1, false},
    {5, 0x1F, Text::kSpeakers_3_1, true},    {4, 0x33, Text::kSpeakers_2_2, false},
    {5, 0x3B, Text::kSpeakers_2_2, true},    {5, 0x37, Text::kSpeakers_3_2, false},
};

}  // namespace

const char16_t* LongCompressionName(uint16_t tag) noexcept { return FindName(kLongNames, tag); }

const char16_t* ShortCompressionName(uint16_t tag) noexcept { return FindName(kShortNames, tag); }

SpeakerName FindSpeakerName(uint32_t channels, uint32_t mask) noexcept {
  for (const SpeakerRow& row : kSpeakers) {
    if (row.channels == channels && row.mask == mask) return {KernelText(row.name), row.withLfe};
  }
  return {nullptr, false};
}

const char16_t* LfeSuffix() noexcept { return KernelText(Text::kSpeakersLfe); }

}  // namespace marlo
