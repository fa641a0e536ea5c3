// SPDX-License-Identifier: Apache-2.0
// Streams over memory and files through the raw slots, and random operations on a window against a plain model.
#include "marlo110k/streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/base/memory.h"
#include "platform/sys/fault_file.h"
#include "testing/random.h"

namespace {

constexpr uint32_t kCapacity = 300;

/// Calls a slot by its number, as a host in another language does.
template <class... Arguments>
HRESULT Slot(void* object, size_t slot, Arguments... arguments) {
  void** table = *static_cast<void***>(object);
  return reinterpret_cast<HRESULT (*)(void*, Arguments...)>(table[slot])(object, arguments...);
}

struct SeekRow {
  int64_t move;
  uint32_t origin;
  HRESULT result;
  uint64_t position;
};

void CheckSeeks(IStream* stream, std::initializer_list<SeekRow> rows) {
  for (const SeekRow& row : rows) {
    uint64_t position = 99;
    EXPECT_EQ(Slot(stream, 5, row.move, row.origin, &position), row.result) << row.move << ' ' << row.origin;
    EXPECT_EQ(position, row.position) << row.move << ' ' << row.origin;
  }
}

TEST(MemoryStream, StaysInItsBlock) {
  const int64_t before = plat::LiveBlocks();
  char block[16];
  std::memcpy(block, "abcdefghXXXXXXXX", 16);
  IStream* stream = nullptr;
  ASSERT_EQ(ZrCreateStreamFromMemory(block, uint32_t{12}, uint32_t{4}, &stream), S_OK);
  char buffer[16] = {};
  uint32_t moved = 9;
  EXPECT_EQ(Slot(stream, 3, static_cast<void*>(buffer), uint32_t{9}, &moved), S_OK);
  EXPECT_EQ(std::string(buffer, moved), "abcd");
  EXPECT_EQ(Slot(stream, 3, static_cast<void*>(buffer), uint32_t{1}, &moved), S_FALSE);
  EXPECT_EQ(moved, 0u);

  CheckSeeks(stream, {{12, 0, S_OK, 12},
                      {13, 0, STG_E_INVALIDFUNCTION, 12},
                      {-1, 0, STG_E_INVALIDFUNCTION, 12},
                      {-12, 1, S_OK, 0},
                      {-1, 1, STG_E_INVALIDFUNCTION, 0},
                      {INT64_MIN, 1, STG_E_INVALIDFUNCTION, 0},
                      {1, 2, STG_E_INVALIDFUNCTION, 0},
                      {-5, 2, STG_E_INVALIDFUNCTION, 0},
                      {-1, 2, S_OK, 3},
                      {0, 3, STG_E_INVALIDFUNCTION, 3},
                      {6, 1, S_OK, 9}});
  EXPECT_EQ(Slot(stream, 4, static_cast<const void*>("1234"), uint32_t{4}, &moved), S_OK) << "cut";
  EXPECT_EQ(moved, 3u);
  EXPECT_EQ(std::string(block, 16), std::string("abcd\0\0\0\0\0"
                                                "123XXXX",
                                                16))
      << "the gap is zero";
  EXPECT_EQ(Slot(stream, 4, static_cast<const void*>("1"), uint32_t{1}, &moved), S_FALSE);
  STATSTG stat;
  EXPECT_EQ(Slot(stream, 12, &stat, uint32_t{0}), S_OK);
  EXPECT_EQ(stat.cbSize, 12u);
  EXPECT_EQ(stat.type, 0u);
  ASSERT_EQ(Slot(stream, 5, int64_t{9}, uint32_t{0}, static_cast<uint64_t*>(nullptr)), S_OK);
  IStream* clone = nullptr;
  ASSERT_EQ(Slot(stream, 13, &clone), S_OK);
  EXPECT_EQ(Slot(clone, 3, static_cast<void*>(buffer), uint32_t{9}, &moved), S_OK);
  EXPECT_EQ(std::string(buffer, moved), "123") << "the clone starts where the stream stood";
  EXPECT_EQ(Slot(clone, 14, static_cast<void*>(block), uint64_t{4}, uint64_t{5}), E_INVALIDARG);
  EXPECT_EQ(Slot(clone, 14, static_cast<void*>(block), uint64_t{4}, uint64_t{4}), S_OK);
  EXPECT_EQ(Slot(clone, 3, static_cast<void*>(buffer), uint32_t{9}, &moved), S_OK);
  EXPECT_EQ(std::string(buffer, moved), "abcd");
  EXPECT_EQ(clone->Release(), 0u);
  EXPECT_EQ(Slot(stream, 6, uint64_t{1}), E_NOTIMPL);
  EXPECT_EQ(Slot(stream, 8, uint32_t{0}), E_NOTIMPL);
  void* other = block;
  EXPECT_EQ(stream->QueryInterface(IID_IZrProtectedStream, &other), E_NOINTERFACE);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(stream->QueryInterface(IID_IUnknown, &other), S_OK);
  EXPECT_EQ(other, stream);
  EXPECT_EQ(stream->Release(), 1u);
  EXPECT_EQ(stream->Release(), 0u);

  EXPECT_EQ(ZrCreateStreamFromMemory(nullptr, uint64_t{1}, uint64_t{0}, &stream), E_INVALIDARG);
  EXPECT_EQ(ZrCreateStreamFromMemory(block, uint64_t{0}, uint64_t{0}, &stream), E_INVALIDARG);
  EXPECT_EQ(ZrCreateStreamFromMemory(block, uint64_t{1}, uint64_t{0}, nullptr), E_INVALIDARG);
  IZrProtectedStream* window = nullptr;
  for (uint32_t failing = 1; failing <= 2; ++failing) {  // The plain stream, then its window.
    plat::FailAllocation(failing);
    EXPECT_EQ(ZrProtectedStream_CreateFromMemory(block, uint32_t{1}, uint32_t{0}, &window), E_OUTOFMEMORY);
    EXPECT_EQ(window, nullptr);
  }
  EXPECT_EQ(plat::LiveBlocks(), before);
}

TEST(FileStream, KeepsItsOwnPositionAndTellsFaults) {
  plat::File* file = plat::OpenMemoryFile("abcdefgh", 8, 100);
  plat::FaultBackend* faults = plat::FaultBackend::Install(file, {});
  IStream* stream = nullptr;
  faults->faults.failSize = true;
  EXPECT_TRUE(FAILED(ZrCreateStreamFromFile(file, &stream)));
  faults->faults.failSize = false;
  ASSERT_EQ(ZrCreateStreamFromFile(file, &stream), S_OK);
  char buffer[16] = {};
  uint32_t moved = 0;
  EXPECT_EQ(stream->Read(buffer, 3, &moved), S_OK);
  plat::SeekFile(file, 7, plat::kSeekStart, nullptr);  // Somebody else's move.
  IStream* clone = nullptr;
  ASSERT_EQ(stream->Clone(&clone), S_OK);
  EXPECT_EQ(stream->Read(buffer, 3, &moved), S_OK);
  EXPECT_EQ(std::string(buffer, moved), "def");
  EXPECT_EQ(clone->Read(buffer, 9, &moved), S_OK);
  EXPECT_EQ(std::string(buffer, moved), "defgh");
  clone->Release();

  CheckSeeks(stream, {{-1, 0, STG_E_INVALIDFUNCTION, 6},
                      {1, 2, STG_E_INVALIDFUNCTION, 6},
                      {-7, 1, STG_E_INVALIDFUNCTION, 6},
                      {-9, 2, STG_E_INVALIDFUNCTION, 6},
                      {-2, 2, S_OK, 6},
                      {INT64_MAX, 1, STG_E_INVALIDFUNCTION, 6},
                      {20, 0, S_OK, 20}});
  uint64_t position = 0;
  faults->faults.diskFullAtByte = 22;
  EXPECT_EQ(stream->Write("1234", 4, &moved), ZR_E_DISK_FULL);
  EXPECT_EQ(moved, 2u);
  EXPECT_EQ(stream->Seek(0, STREAM_SEEK_END, &position), S_OK);
  EXPECT_EQ(position, 22u) << "what was moved counts";
  faults->faults.readErrorAtCall = faults->reads + 1;
  faults->faults.error = 5;
  EXPECT_EQ(stream->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
  EXPECT_EQ(stream->Read(buffer, 3, &moved), E_ACCESSDENIED);
  EXPECT_EQ(moved, 0u);
  STATSTG stat;
  EXPECT_EQ(stream->Stat(&stat, 0), E_NOTIMPL);
  EXPECT_EQ(stream->Release(), 0u);
  EXPECT_TRUE(plat::SeekFile(file, 0, plat::kSeekStart, nullptr)) << "the file stays open";
  plat::CloseFile(file);
  EXPECT_EQ(ZrCreateStreamFromFile(nullptr, &stream), E_INVALIDARG);
}

/// The window's rules over a block that every operation leaves in one place.
struct WindowModel {
  std::vector<uint8_t> bytes = std::vector<uint8_t>(200);
  int64_t position = 0;
  bool enabled = false;
  bool enforced = false;
  int64_t base = 0;
  int64_t length = 0;
  uint32_t mode = 1;

  int64_t Size() const { return static_cast<int64_t>(bytes.size()); }
  int64_t End() const { return base + length; }
  int64_t Origin() const { return enabled || enforced ? base : 0; }

  HRESULT Read(std::vector<uint8_t>* got, int64_t count) {
    got->clear();
    if (!enabled || mode < 1 || mode > 2) return S_OK;
    if (position < base || (mode == 1 && position > End())) return STG_E_ACCESSDENIED;
    for (int64_t i = 0; i < count && position < Size() && (mode == 2 || position < End()); ++i, ++position) {
      got->push_back(position < End() ? bytes[static_cast<size_t>(position)] : uint8_t{0});
    }
    return static_cast<int64_t>(got->size()) < count ? S_FALSE : S_OK;
  }
  HRESULT Write(const uint8_t* data, int64_t count) {
    if (enforced && position < base) return STG_E_ACCESSDENIED;
    const bool full = position >= kCapacity;
    count = std::min<int64_t>(count, kCapacity - position);
    bytes.resize(static_cast<size_t>(full ? Size() : std::max(Size(), position + count)));
    for (int64_t i = 0; i < count; ++i) bytes[static_cast<size_t>(position++)] = data[i];
    if (enabled && count > 0) length = std::max(length, position - base);
    return full ? S_FALSE : S_OK;
  }
  HRESULT Seek(int64_t move, uint32_t origin) {
    if (origin > 2) return S_OK;
    const int64_t target = move + (origin == 0 ? Origin() : origin == 1 ? position : enabled ? End() : Size());
    const bool held = enabled && (origin != 0 || mode == 1);
    const bool innerRefuses = target < 0 || target > kCapacity || (origin == 2 && !enabled && move > 0);
    if (target < Origin() || (held && target > End()) || innerRefuses) return STG_E_INVALIDFUNCTION;
    position = target;
    return S_OK;
  }
};

TEST(ProtectedStream, FollowsAModelOfTheWindow) {
  testing_support::Random random(11);
  SCOPED_TRACE(random.Label());
  std::vector<uint8_t> block(kCapacity);
  WindowModel model;
  for (uint8_t& byte : model.bytes) byte = static_cast<uint8_t>(random.Bits() | 1);
  std::copy(model.bytes.begin(), model.bytes.end(), block.begin());
  IZrProtectedStream* stream = nullptr;
  ASSERT_EQ(ZrProtectedStream_CreateFromMemory(block.data(), kCapacity, uint32_t{200}, &stream), S_OK);
  for (int step = 0; step < 20'000; ++step) {
    SCOPED_TRACE(step);
    uint8_t bytes[64];
    const int64_t count = random.Between(0, 64);
    uint32_t moved = 99;
    switch (random.Between(0, 7)) {
      case 0:
      case 1: {
        std::memset(bytes, 0xEE, sizeof bytes);
        std::vector<uint8_t> expected;
        ASSERT_EQ(stream->Read(bytes, static_cast<uint32_t>(count), &moved), model.Read(&expected, count));
        ASSERT_EQ(std::vector<uint8_t>(bytes, bytes + moved), expected);
        break;
      }
      case 2: {
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random.Bits() | 1);
        const int64_t before = model.position;
        ASSERT_EQ(stream->Write(bytes, static_cast<uint32_t>(count), &moved), model.Write(bytes, count));
        ASSERT_EQ(moved, model.position - before);
        break;
      }
      case 3:
        if (random.Between(0, 5) != 0) break;
        model.enabled = random.Between(0, 3) != 0;
        model.enforced = random.Between(0, 1) != 0;
        model.base = random.Between(0, 150);
        model.length = random.Between(0, 120);
        ASSERT_EQ(Slot(stream, 14, static_cast<int32_t>(model.enabled), static_cast<int32_t>(model.enforced),
                       static_cast<uint64_t>(model.base), static_cast<uint64_t>(model.length)),
                  S_OK);
        break;
      case 4:
        model.mode = static_cast<uint32_t>(random.Between(0, 11) == 0 ? 3 : random.Between(1, 2));
        ASSERT_EQ(Slot(stream, 15, model.mode), S_OK);
        break;
      default: {
        const auto origin = static_cast<uint32_t>(random.Between(0, 3));
        const int64_t move = origin == 0 ? random.Between(-5, 200) : random.Between(-300, 60);
        uint64_t told = 0;
        ASSERT_EQ(stream->Seek(move, origin, &told), model.Seek(move, origin)) << move << ' ' << origin;
        ASSERT_EQ(told, static_cast<uint64_t>(std::max<int64_t>(0, model.position - model.Origin())));
      }
    }
    ASSERT_TRUE(std::equal(model.bytes.begin(), model.bytes.end(), block.begin()));
  }
  EXPECT_EQ(stream->Release(), 0u);
}

TEST(ProtectedStream, HoldsAndChangesItsInnerStream) {
  const int64_t before = plat::LiveBlocks();
  char block[] = "abcdef";
  IStream* inner = nullptr;
  IZrProtectedStream* stream = nullptr;
  ASSERT_EQ(ZrCreateStreamFromMemory(block, uint32_t{6}, uint32_t{6}, &inner), S_OK);
  ASSERT_EQ(ZrProtectedStream_CreateFromStream(inner, &stream), S_OK);
  EXPECT_EQ(inner->Release(), 1u);
  char buffer[8] = {};
  EXPECT_EQ(stream->SetWindow(1, 0, 2, ~uint64_t{0}), S_OK) << "a length past all positions";
  EXPECT_EQ(stream->Seek(1, STREAM_SEEK_SET, nullptr), S_OK);
  IStream* clone = nullptr;
  ASSERT_EQ(stream->Clone(&clone), S_OK);
  uint32_t moved = 9;
  EXPECT_EQ(clone->Read(buffer, 2, &moved), S_OK) << "a clone has no window";
  EXPECT_EQ(moved, 0u);
  uint64_t position = 0;
  EXPECT_EQ(clone->Seek(0, STREAM_SEEK_CUR, &position), S_OK);
  EXPECT_EQ(position, 3u);
  void* same = nullptr;
  EXPECT_EQ(clone->QueryInterface(IID_IZrProtectedStream, &same), S_OK);
  EXPECT_EQ(clone->Release(), 1u);
  EXPECT_EQ(Slot(stream, 16, static_cast<IStream*>(same)), S_OK) << "a window on a window";
  EXPECT_EQ(clone->Release(), 1u);
  EXPECT_EQ(stream->Read(nullptr, 1, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream->Write(nullptr, 1, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream->SetStream(nullptr), S_OK);
  EXPECT_EQ(stream->Read(buffer, 1, nullptr), STG_E_READFAULT);
  EXPECT_EQ(stream->Write(buffer, 1, nullptr), STG_E_WRITEFAULT);
  EXPECT_EQ(stream->Seek(0, STREAM_SEEK_SET, nullptr), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream->Release(), 0u);
  EXPECT_EQ(ZrProtectedStream_CreateFromStream(nullptr, &stream), E_INVALIDARG);
  EXPECT_EQ(plat::LiveBlocks(), before);
}

}  // namespace
