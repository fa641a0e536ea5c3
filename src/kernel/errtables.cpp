// SPDX-License-Identifier: Apache-2.0
// The tables of codes and operations, made at compile time from the names of the catalogue's texts: a code's text is
// "error.8004E00A", an operation's "context.5".
#include "kernel/errtables.h"

#include "kernel/text_names.h"

namespace marlo {
namespace {

constexpr std::u16string_view kErrorPrefix = u"error.";
constexpr std::u16string_view kContextPrefix = u"context.";

struct ErrorRows {
  _zrerror_table rows[CountNames(kErrorPrefix)];
};

constexpr ErrorRows MakeErrorRows() noexcept {
  ErrorRows result{};
  size_t row = 0;
  ForEachName(kErrorPrefix, [&](std::u16string_view name, Text text) {
    result.rows[row++] = {ZrCode(ParseNumber(name, 16)), &Descriptor(text)};
  });
  return result;
}

struct ContextRow {
  uint32_t context;
  Text text;
};

struct ContextRows {
  ContextRow rows[CountNames(kContextPrefix)];
};

constexpr ContextRows MakeContextRows() noexcept {
  ContextRows result{};
  size_t row = 0;
  ForEachName(kContextPrefix, [&](std::u16string_view name, Text text) {
    result.rows[row++] = {ParseNumber(name, 10), text};
  });
  return result;
}

constinit const ErrorRows errorRows = MakeErrorRows();
constexpr ContextRows kContexts = MakeContextRows();

}  // namespace

std::span<const _zrerror_table> ErrorTable() noexcept { return errorRows.rows; }

Text ContextText(uint32_t context) noexcept {
  for (const ContextRow& row : kContexts.rows) {
    if (row.context == context) return row.text;
  }
  return Text::kContext_0;
}

}  // namespace marlo
