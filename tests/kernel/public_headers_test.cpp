// SPDX-License-Identifier: Apache-2.0
// The published slots of interfaces whose order is a contract, by calls through the raw table.
#include <gtest/gtest.h>

#include "marlo110k/marlo110k.h"

namespace {

/// Gives the number of the called slot.
class Numbered : public IPersistStreamInit {
 public:
  HRESULT QueryInterface(REFIID, void**) override { return 0; }
  uint32_t AddRef() override { return 1; }
  uint32_t Release() override { return 2; }
  HRESULT GetClassID(CLSID*) override { return 3; }
  HRESULT IsDirty() override { return 4; }
  HRESULT Load(IStream*) override { return 5; }
  HRESULT Save(IStream*, int32_t) override { return 6; }
  HRESULT GetSizeMax(uint64_t*) override { return 7; }
  HRESULT InitNew() override { return 8; }
};

class NumberedStream : public IPersistStream {
 public:
  HRESULT QueryInterface(REFIID, void**) override { return 0; }
  uint32_t AddRef() override { return 1; }
  uint32_t Release() override { return 2; }
  HRESULT GetClassID(CLSID*) override { return 3; }
  HRESULT IsDirty() override { return 4; }
  HRESULT Load(IStream*) override { return 5; }
  HRESULT Save(IStream*, int32_t) override { return 6; }
  HRESULT GetSizeMax(uint64_t*) override { return 7; }
};

using Slot = int32_t (*)(void* object, const void*, const void*);

int32_t CallSlot(void* object, size_t slot) {
  Slot* table = nullptr;
  std::memcpy(&table, object, sizeof(table));
  return table[slot](object, nullptr, nullptr);
}

TEST(PublishedSlots, PersistInterfaces) {
  Numbered init;
  NumberedStream stream;
  for (size_t slot = 0; slot <= 8; ++slot) EXPECT_EQ(static_cast<int32_t>(slot), CallSlot(&init, slot));
  for (size_t slot = 0; slot <= 7; ++slot) EXPECT_EQ(static_cast<int32_t>(slot), CallSlot(&stream, slot));
}

}  // namespace
