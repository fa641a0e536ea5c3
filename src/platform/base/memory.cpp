// SPDX-License-Identifier: Apache-2.0
// The long-lived heap: the C library's blocks with their size in front.
#include "platform/base/memory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace plat {
namespace {

/// Stands in front of every block and keeps its alignment.
struct alignas(16) Header {
  size_t bytes;
};
static_assert(sizeof(Header) == 16);

std::atomic<int64_t> liveBlocks{0};
thread_local uint32_t failCountdown = 0;

bool MustFail() { return failCountdown != 0 && --failCountdown == 0; }

Header* HeaderOf(void* block) { return static_cast<Header*>(block) - 1; }
const Header* HeaderOf(const void* block) { return static_cast<const Header*>(block) - 1; }

size_t BytesWithHeader(size_t bytes) { return sizeof(Header) + (bytes == 0 ? 1 : bytes); }

constexpr size_t kMaximumBytes = std::numeric_limits<ptrdiff_t>::max() - sizeof(Header);

// A platform string: four spare bytes, the length in bytes, the characters, a terminator.
constexpr size_t kStringPrefixBytes = 8;

}  // namespace

void* AllocateZeroed(size_t bytes) noexcept {
  if (MustFail() || bytes > kMaximumBytes) return nullptr;
  Header* header = static_cast<Header*>(std::calloc(1, BytesWithHeader(bytes)));
  if (header == nullptr) return nullptr;
  header->bytes = bytes;
  liveBlocks.fetch_add(1, std::memory_order_relaxed);
  return header + 1;
}

void* ReallocateZeroed(void* block, size_t bytes) noexcept {
  if (block == nullptr) return AllocateZeroed(bytes);
  if (MustFail() || bytes > kMaximumBytes) return nullptr;
  const size_t former = HeaderOf(block)->bytes;
  Header* header = static_cast<Header*>(std::realloc(HeaderOf(block), BytesWithHeader(bytes)));
  if (header == nullptr) return nullptr;
  header->bytes = bytes;
  unsigned char* data = reinterpret_cast<unsigned char*>(header + 1);
  if (bytes > former) std::memset(data + former, 0, bytes - former);
  return data;
}

void FreeBlock(void* block) noexcept {
  if (block == nullptr) return;
  std::free(HeaderOf(block));
  liveBlocks.fetch_sub(1, std::memory_order_relaxed);
}

size_t BlockBytes(const void* block) noexcept { return block == nullptr ? 0 : HeaderOf(block)->bytes; }

void FailAllocation(uint32_t countdown) noexcept { failCountdown = countdown; }

int64_t LiveBlocks() noexcept { return liveBlocks.load(std::memory_order_relaxed); }

char16_t* AllocateString(const char16_t* text, size_t characters) noexcept {
  if (characters > std::numeric_limits<uint32_t>::max() / sizeof(char16_t) - kStringPrefixBytes) return nullptr;
  const size_t textBytes = characters * sizeof(char16_t);
  unsigned char* block = static_cast<unsigned char*>(AllocateZeroed(kStringPrefixBytes + textBytes + sizeof(char16_t)));
  if (block == nullptr) return nullptr;
  const uint32_t prefix = static_cast<uint32_t>(textBytes);
  std::memcpy(block + kStringPrefixBytes - sizeof prefix, &prefix, sizeof prefix);
  if (text != nullptr) std::memcpy(block + kStringPrefixBytes, text, textBytes);
  return reinterpret_cast<char16_t*>(block + kStringPrefixBytes);
}

void FreeString(char16_t* text) noexcept {
  if (text != nullptr) FreeBlock(reinterpret_cast<unsigned char*>(text) - kStringPrefixBytes);
}

size_t StringCharacters(const char16_t* text) noexcept {
  if (text == nullptr) return 0;
  uint32_t prefix = 0;
  std::memcpy(&prefix, reinterpret_cast<const unsigned char*>(text) - sizeof prefix, sizeof prefix);
  return prefix / sizeof(char16_t);
}

}  // namespace plat
