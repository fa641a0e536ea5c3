// SPDX-License-Identifier: Apache-2.0
// Finds the text of a code or an operation and composes the message of a failure.
#include "marlo110k/errors.h"

#include <atomic>
#include <cstring>
#include <string_view>

#include "kernel/error_state.h"
#include "kernel/errtables.h"
#include "marlo110k/printf.h"
#include "platform/base/memory.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr int32_t kMostTables = 32;
constexpr uint32_t kFullMessage = 1948;  // a message of this length gets no explanation
constexpr uintptr_t kFirstTextAddress = 0x10000;

struct RegisteredTable {
  HZRLANG language;
  int32_t rows;
  std::atomic<const void*> table;  // stored last: a reader that sees it sees the rest
};

constinit RegisteredTable registeredTables[kMostTables]{};
constinit std::atomic<int32_t> placesTaken{0};

int32_t Register(HZRLANG language, const void* table, int32_t rows) noexcept {
  if (table == nullptr || rows < 0) return 1;
  int32_t place = placesTaken.load(std::memory_order_relaxed);
  do {
    if (place >= kMostTables) return 1;
  } while (!placesTaken.compare_exchange_weak(place, place + 1, std::memory_order_relaxed));
  RegisteredTable& entry = registeredTables[place];
  entry.language = language;
  entry.rows = rows;
  entry.table.store(table, std::memory_order_release);
  return 0;
}

/// One reader serves both kinds of row: a code, and a machine word that stands for a text.
const void* FindText(const void* table, int32_t rows, HRESULT code) noexcept {
  const auto* row = static_cast<const unsigned char*>(table);
  for (int32_t i = 0; i < rows; ++i, row += sizeof(_zrerror_table)) {
    HRESULT rowCode = 0;
    std::memcpy(&rowCode, row, sizeof rowCode);
    if (rowCode != code) continue;
    const void* text = nullptr;
    std::memcpy(&text, row + offsetof(_zrerror_table, text), sizeof text);
    return text;
  }
  return nullptr;
}

uint32_t AppendFormatted(uint32_t used, const char16_t* format, const char16_t* argument) noexcept {
  uint32_t written = 0;
  ZrCchPrintF(errorState.message + used, static_cast<uint32_t>(kMessageCharacters) - used, &written, format, argument);
  return used + written;
}

}  // namespace
}  // namespace marlo

int32_t ZrErrorHandler_AddErrorTable(const _zrerror_table* table, int32_t rows) noexcept {
  return marlo::Register(marlo::KernelLanguage(), table, rows);
}

int32_t ZrErrorHandler_AddErrorTable(HZRLANG language, const _zrerror_table_rcid* table, int32_t rows) noexcept {
  return marlo::Register(language, table, rows);
}

const char16_t* ZrErrorHandler_GetHresultString(HRESULT code) noexcept {
  for (const marlo::RegisteredTable& entry : marlo::registeredTables) {
    const void* table = entry.table.load(std::memory_order_acquire);
    if (table == nullptr) continue;
    if (const void* text = marlo::FindText(table, entry.rows, code)) return ZrGetStringSmart(entry.language, text);
  }
  for (const _zrerror_table& row : marlo::ErrorTable()) {
    if (row.code == code) return ZrGetStringSmart(marlo::KernelLanguage(), row.text);
  }
  return nullptr;
}

const char16_t* ZrErrorHandler_GetContextString(uintptr_t context) noexcept {
  if (context >= marlo::kFirstTextAddress) return reinterpret_cast<const char16_t*>(context);
  return marlo::KernelText(marlo::ContextText(static_cast<uint32_t>(context)));
}

const char16_t* ZrErrorHandler_GetErrorMessage(uintptr_t context, HRESULT code, const char16_t* argument) noexcept {
  char16_t* const message = marlo::errorState.message;
  if (argument == nullptr) argument = u"";
  const uint32_t used = marlo::AppendFormatted(0, ZrErrorHandler_GetContextString(context), argument);
  if (used >= marlo::kFullMessage) return message;
  if (const char16_t* text = ZrErrorHandler_GetHresultString(code)) {
    // The explanation is a format too: it names the application, and may repeat the argument.
    marlo::AppendFormatted(used, text, argument);
  } else {
    ZrCchPrintF(message + used, static_cast<uint32_t>(marlo::kMessageCharacters) - used, nullptr,
                marlo::KernelText(marlo::Text::kBoxMissing), code);
  }
  return message;
}

char16_t* ZrErrorHandler_ComposeErrorText(uintptr_t context, HRESULT code, const char16_t* argument) noexcept {
  constexpr std::u16string_view kOpen = u"\r\n<Details>\r\n";
  constexpr std::u16string_view kClose = u"\r\n</Details>";
  const char16_t* message = ZrErrorHandler_GetErrorMessage(context, code, argument);
  const size_t messageCharacters = plat::TextLength(message);
  const char16_t* details = ZrErrorHandler_DetailsInfo(nullptr, nullptr, nullptr);
  if (details == nullptr) return plat::AllocateString(message, messageCharacters);

  const size_t detailCharacters = plat::TextLength(details);
  char16_t* text = plat::AllocateString(nullptr, messageCharacters + kOpen.size() + detailCharacters + kClose.size());
  if (text == nullptr) return nullptr;
  char16_t* cursor = text;
  const auto append = [&](const char16_t* part, size_t characters) {
    std::memcpy(cursor, part, characters * sizeof(char16_t));
    cursor += characters;
  };
  append(message, messageCharacters);
  append(kOpen.data(), kOpen.size());
  append(details, detailCharacters);
  append(kClose.data(), kClose.size());
  return text;
}

void ZrErrorHandler_FreeErrorText(char16_t* text) noexcept { plat::FreeString(text); }
