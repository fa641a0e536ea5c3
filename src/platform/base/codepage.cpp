// SPDX-License-Identifier: Apache-2.0
// The ANSI code page as a table of 256 characters; ICU supplies the tables and the double-byte page.
#include "platform/base/codepage.h"

#include <pthread.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>

namespace plat {
namespace {

struct Pair {
  char16_t character;
  uint8_t byte;
};

/// A single-byte page. The lower half is ASCII in every one of them.
struct SingleBytePage {
  std::array<char16_t, 128> upper;  ///< Characters of the bytes from 0x80 on.
  std::array<Pair, 128> sorted;     ///< The same, by character.
};

constexpr uint32_t kFirstPage = 1250;
constexpr uint32_t kLastPage = 1258;
constexpr uint32_t kDoubleBytePage = 932;
constexpr uint32_t kDefaultPage = 1252;

/// Bytes of 1252 that lie between ASCII and Latin-1; the five that the page leaves out keep their value.
constexpr char16_t kWestern[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr SingleBytePage WithReverse(SingleBytePage page) {
  for (size_t i = 0; i < 128; ++i) page.sorted[i] = {page.upper[i], static_cast<uint8_t>(0x80 + i)};
  std::sort(page.sorted.begin(), page.sorted.end(), [](Pair a, Pair b) { return a.character < b.character; });
  return page;
}

constexpr SingleBytePage WesternPage() {
  SingleBytePage page{};
  for (size_t i = 0; i < 128; ++i) page.upper[i] = i < 32 ? kWestern[i] : static_cast<char16_t>(0x80 + i);
  return WithReverse(page);
}

constexpr SingleBytePage kWesternPage = WesternPage();

pthread_mutex_t loadLock = PTHREAD_MUTEX_INITIALIZER;
SingleBytePage loadedPages[kLastPage - kFirstPage + 1];
bool pageLoaded[kLastPage - kFirstPage + 1];

std::atomic<uint32_t> currentPage{kDefaultPage};
/// Null while the double-byte page is set.
std::atomic<const SingleBytePage*> currentTable{&kWesternPage};

UConverter* OpenConverter(uint32_t page) {
  char name[24];
  std::snprintf(name, sizeof name, "windows-%u", page);
  UErrorCode error = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(name, &error);
  return U_SUCCESS(error) ? converter : nullptr;
}

/// Fills the page's table. A byte without a character gets one of the private use area, so that every
/// byte survives the way there and back.
bool LoadPage(uint32_t page, SingleBytePage* table) {
  UConverter* converter = OpenConverter(page);
  if (converter == nullptr) return false;
  for (size_t i = 0; i < 128; ++i) {
    const char byte = static_cast<char>(0x80 + i);
    char16_t characters[4];
    UErrorCode error = U_ZERO_ERROR;
    ucnv_reset(converter);
    const int32_t count = ucnv_toUChars(converter, characters, 4, &byte, 1, &error);
    const bool known = U_SUCCESS(error) && count == 1 && characters[0] != 0xFFFD;
    table->upper[i] = known ? characters[0] : static_cast<char16_t>(0xF780 + i);
  }
  ucnv_close(converter);
  *table = WithReverse(*table);
  return true;
}

char ByteOf(const SingleBytePage& page, char16_t character) {
  if (character < 0x80) return static_cast<char>(character);
  const Pair* found = std::lower_bound(page.sorted.begin(), page.sorted.end(), character,
                                       [](Pair pair, char16_t sought) { return pair.character < sought; });
  return found != page.sorted.end() && found->character == character ? static_cast<char>(found->byte) : '?';
}

size_t DoubleByteFrom(const char16_t* text, size_t characters, char* buffer, size_t capacityBytes) {
  UConverter* converter = OpenConverter(kDoubleBytePage);
  if (converter == nullptr) return 0;
  UErrorCode error = U_ZERO_ERROR;
  ucnv_setSubstChars(converter, "?", 1, &error);
  char* target = buffer;
  error = U_ZERO_ERROR;
  ucnv_fromUnicode(converter, &target, buffer + capacityBytes, &text, text + characters, nullptr, true, &error);
  ucnv_close(converter);
  return static_cast<size_t>(target - buffer);
}

size_t DoubleByteTo(const char* text, size_t bytes, char16_t* buffer, size_t capacity) {
  UConverter* converter = OpenConverter(kDoubleBytePage);
  if (converter == nullptr) return 0;
  UErrorCode error = U_ZERO_ERROR;
  char16_t* target = buffer;
  ucnv_toUnicode(converter, &target, buffer + capacity, &text, text + bytes, nullptr, true, &error);
  ucnv_close(converter);
  return static_cast<size_t>(target - buffer);
}

}  // namespace

bool SetAnsiPage(uint32_t page) noexcept {
  const SingleBytePage* table = nullptr;
  if (page == kDefaultPage) {
    table = &kWesternPage;
  } else if (page >= kFirstPage && page <= kLastPage) {
    const uint32_t index = page - kFirstPage;
    pthread_mutex_lock(&loadLock);
    if (!pageLoaded[index]) pageLoaded[index] = LoadPage(page, &loadedPages[index]);
    if (pageLoaded[index]) table = &loadedPages[index];
    pthread_mutex_unlock(&loadLock);
    if (table == nullptr) return false;
  } else if (page != kDoubleBytePage) {
    return false;
  }
  currentTable.store(table, std::memory_order_release);
  currentPage.store(page, std::memory_order_relaxed);
  return true;
}

uint32_t AnsiPage() noexcept { return currentPage.load(std::memory_order_relaxed); }

size_t ToAnsi(const char16_t* text, size_t characters, char* buffer, size_t capacityBytes) noexcept {
  const SingleBytePage* page = currentTable.load(std::memory_order_acquire);
  if (page == nullptr) return DoubleByteFrom(text, characters, buffer, capacityBytes);
  const size_t count = std::min(characters, capacityBytes);
  for (size_t i = 0; i < count; ++i) buffer[i] = ByteOf(*page, text[i]);
  return count;
}

size_t FromAnsi(const char* text, size_t bytes, char16_t* buffer, size_t capacity) noexcept {
  const SingleBytePage* page = currentTable.load(std::memory_order_acquire);
  if (page == nullptr) return DoubleByteTo(text, bytes, buffer, capacity);
  const size_t count = std::min(bytes, capacity);
  for (size_t i = 0; i < count; ++i) {
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    buffer[i] = byte < 0x80 ? byte : page->upper[byte - 0x80];
  }
  return count;
}

}  // namespace plat
