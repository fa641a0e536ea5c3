// SPDX-License-Identifier: Apache-2.0
// The order of an interface's operations is what hosts and plug-ins are built on: each slot is called through
// the raw table, as a plug-in of another compiler would.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "marlo110k/contract/stream.h"
#include "marlo110k/contract/unknown.h"

namespace {

std::vector<std::string> calls;

HRESULT Note(const char* name) {
  calls.emplace_back(name);
  return static_cast<HRESULT>(calls.size());
}

class StreamProbe final : public IStream {
 public:
  HRESULT QueryInterface(REFIID iid, void** object) override {
    *object = iid == IID_IStream ? this : nullptr;
    return Note("QueryInterface");
  }
  uint32_t AddRef() override { return static_cast<uint32_t>(Note("AddRef")); }
  uint32_t Release() override { return static_cast<uint32_t>(Note("Release")); }
  HRESULT Read(void*, uint32_t bytes, uint32_t* bytesRead) override {
    *bytesRead = bytes;
    return Note("Read");
  }
  HRESULT Write(const void*, uint32_t bytes, uint32_t* bytesWritten) override {
    *bytesWritten = bytes;
    return Note("Write");
  }
  HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) override {
    *newPosition = static_cast<uint64_t>(move) + origin;
    return Note("Seek");
  }
  HRESULT SetSize(uint64_t) override { return Note("SetSize"); }
  HRESULT CopyTo(IStream*, uint64_t, uint64_t*, uint64_t*) override { return Note("CopyTo"); }
  HRESULT Commit(uint32_t) override { return Note("Commit"); }
  HRESULT Revert() override { return Note("Revert"); }
  HRESULT LockRegion(uint64_t, uint64_t, uint32_t) override { return Note("LockRegion"); }
  HRESULT UnlockRegion(uint64_t, uint64_t, uint32_t) override { return Note("UnlockRegion"); }
  HRESULT Stat(STATSTG*, uint32_t) override { return Note("Stat"); }
  HRESULT Clone(IStream**) override { return Note("Clone"); }
};

class FactoryProbe final : public IClassFactory {
 public:
  HRESULT QueryInterface(REFIID, void**) override { return Note("QueryInterface"); }
  uint32_t AddRef() override { return static_cast<uint32_t>(Note("AddRef")); }
  uint32_t Release() override { return static_cast<uint32_t>(Note("Release")); }
  HRESULT CreateInstance(IUnknown*, REFIID, void**) override { return Note("CreateInstance"); }
  HRESULT LockServer(int32_t lock) override { return lock == 7 ? Note("LockServer") : E_FAIL; }
};

// Calls slot `slot` of an object as a plain function whose first argument is the object.
template <typename... Arguments>
__attribute__((no_sanitize("undefined"))) HRESULT CallSlot(void* object, size_t slot, Arguments... arguments) {
  void** table = *static_cast<void***>(object);
  return reinterpret_cast<HRESULT (*)(void*, Arguments...)>(table[slot])(object, arguments...);
}

TEST(ContractSlots, StreamTableIsInPublishedOrder) {
  StreamProbe probe;
  IStream* stream = &probe;
  void* object = stream;
  calls.clear();
  void* found = nullptr;
  uint32_t bytes = 0;
  uint64_t position = 0;
  EXPECT_EQ(1, CallSlot(object, 0, &IID_IStream, &found));
  EXPECT_EQ(object, found);
  EXPECT_EQ(2, CallSlot(object, 1));
  EXPECT_EQ(3, CallSlot(object, 2));
  EXPECT_EQ(4, CallSlot(object, 3, static_cast<void*>(nullptr), uint32_t{11}, &bytes));
  EXPECT_EQ(11u, bytes);
  EXPECT_EQ(5, CallSlot(object, 4, static_cast<const void*>(nullptr), uint32_t{12}, &bytes));
  EXPECT_EQ(12u, bytes);
  EXPECT_EQ(6, CallSlot(object, 5, int64_t{0x100000000}, uint32_t{STREAM_SEEK_END}, &position));
  EXPECT_EQ(0x100000002u, position);
  EXPECT_EQ(7, CallSlot(object, 6, uint64_t{0}));
  EXPECT_EQ(8, CallSlot(object, 7, static_cast<IStream*>(nullptr), uint64_t{0}, &position, &position));
  EXPECT_EQ(9, CallSlot(object, 8, uint32_t{0}));
  EXPECT_EQ(10, CallSlot(object, 9));
  EXPECT_EQ(11, CallSlot(object, 10, uint64_t{0}, uint64_t{0}, uint32_t{0}));
  EXPECT_EQ(12, CallSlot(object, 11, uint64_t{0}, uint64_t{0}, uint32_t{0}));
  EXPECT_EQ(13, CallSlot(object, 12, static_cast<STATSTG*>(nullptr), uint32_t{0}));
  EXPECT_EQ(14, CallSlot(object, 13, static_cast<IStream**>(nullptr)));
  const std::vector<std::string> published = {"QueryInterface", "AddRef",       "Release", "Read",   "Write",
                                              "Seek",           "SetSize",      "CopyTo",  "Commit", "Revert",
                                              "LockRegion",     "UnlockRegion", "Stat",    "Clone"};
  EXPECT_EQ(published, calls);
}

TEST(ContractSlots, FactoryTableIsInPublishedOrder) {
  FactoryProbe probe;
  IClassFactory* factory = &probe;
  void* object = factory;
  calls.clear();
  void* found = nullptr;
  EXPECT_EQ(1, CallSlot(object, 0, &IID_IUnknown, &found));
  EXPECT_EQ(2, CallSlot(object, 1));
  EXPECT_EQ(3, CallSlot(object, 2));
  EXPECT_EQ(4, CallSlot(object, 3, static_cast<IUnknown*>(nullptr), &IID_IUnknown, &found));
  EXPECT_EQ(5, CallSlot(object, 4, int32_t{7}));
  const std::vector<std::string> published = {"QueryInterface", "AddRef", "Release", "CreateInstance", "LockServer"};
  EXPECT_EQ(published, calls);
}

}  // namespace
