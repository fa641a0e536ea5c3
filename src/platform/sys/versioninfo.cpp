// SPDX-License-Identifier: Apache-2.0
// The version resource: a tree of named blocks, walked by a path of names.
#include "platform/sys/versioninfo.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "platform/base/text.h"
#include "platform/sys/resource_image.h"

namespace plat {
namespace {

constexpr uint16_t kVersionType = 16;

/// A block of the tree: its name, its value and the blocks below it.
struct Block {
  std::u16string name;
  const uint8_t* value = nullptr;
  size_t valueBytes = 0;
  const uint8_t* children = nullptr;
  size_t childrenBytes = 0;
};

uint16_t Word(const uint8_t* from) {
  uint16_t value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

size_t Aligned(size_t offset) { return (offset + 3) & ~size_t{3}; }

/// Takes the block at the start of `data`. @return its padded length, 0 when it is damaged.
size_t ReadBlock(const uint8_t* data, size_t bytes, Block* block) {
  constexpr size_t kHeadBytes = 6;  // Length, value length, kind of value.
  constexpr uint16_t kTextValue = 1;
  if (bytes < kHeadBytes) return 0;
  const size_t length = Word(data);
  if (length < kHeadBytes || length > bytes) return 0;
  block->name.clear();
  size_t at = kHeadBytes;
  for (;; at += 2) {
    if (at + 2 > length) return 0;
    const char16_t character = Word(data + at);
    if (character == 0) break;
    block->name.push_back(character);
  }
  at = std::min(Aligned(at + 2), length);
  // A text's length counts characters.
  const size_t announced = size_t{Word(data + 2)} * (Word(data + 4) == kTextValue ? 2 : 1);
  block->value = data + at;
  block->valueBytes = std::min(announced, length - at);
  at = std::min(Aligned(at + block->valueBytes), length);
  block->children = data + at;
  block->childrenBytes = length - at;
  return std::min(Aligned(length), bytes);
}

/// Finds the child of that name, without regard to case.
bool FindChild(const Block& parent, const std::u16string& name, Block* child) {
  size_t at = 0;
  while (at < parent.childrenBytes) {
    const size_t length = ReadBlock(parent.children + at, parent.childrenBytes - at, child);
    if (length == 0) return false;
    if (CompareTextNoCase(child->name.c_str(), name.c_str()) == 0) return true;
    at += length;
  }
  return false;
}

/// Finds the block of a path such as "\VarFileInfo\Translation".
bool FindBlock(const std::vector<uint8_t>& resources, const char16_t* path, Block* found) {
  ResourceWalk walk(resources.data(), resources.size());
  ResourceEntry entry;
  do {
    if (!walk.Next(&entry)) return false;
  } while (entry.type.text != nullptr || entry.type.number != kVersionType);
  if (ReadBlock(entry.data, entry.bytes, found) == 0) return false;
  const std::u16string text(path != nullptr ? path : u"");
  size_t begin = text.find_first_not_of(u'\\');
  while (begin != std::u16string::npos) {
    const size_t end = std::min(text.find(u'\\', begin), text.size());
    Block child;
    if (!FindChild(*found, text.substr(begin, end - begin), &child)) return false;
    *found = child;
    begin = text.find_first_not_of(u'\\', end);
  }
  return true;
}

}  // namespace

bool VersionTranslation(const char16_t* path, uint16_t* language, uint16_t* codePage) noexcept {
  try {
    std::vector<uint8_t> resources;
    Block block;
    if (!ReadResources(path, &resources) || !FindBlock(resources, u"\\VarFileInfo\\Translation", &block)) return false;
    if (block.valueBytes < 4) return false;
    *language = Word(block.value);
    *codePage = Word(block.value + 2);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool VersionValue(const char16_t* path, const char16_t* subBlock, char16_t* buffer, size_t characters) noexcept {
  try {
    std::vector<uint8_t> resources;
    Block block;
    if (!ReadResources(path, &resources) || !FindBlock(resources, subBlock, &block)) return false;
    std::u16string value(block.valueBytes / 2, u'\0');
    std::memcpy(value.data(), block.value, value.size() * 2);
    CopyText(buffer, characters, value.c_str());
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace plat
