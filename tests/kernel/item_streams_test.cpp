// SPDX-License-Identifier: Apache-2.0
// Lists read as streams: the same bytes whatever the pieces, and the places where they end.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "kernel/list_stream.h"
#include "platform/base/memory.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr GUID kType = {0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};

void AppendWords(Bytes* bytes, std::initializer_list<uint32_t> words) {
  for (const uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) bytes->push_back(static_cast<uint8_t>(word >> shift));
  }
}

/// A record of `bytes` bytes whose first word is its length.
Bytes Record(uint32_t bytes) {
  Bytes record;
  AppendWords(&record, {bytes});
  while (record.size() < bytes) record.push_back(static_cast<uint8_t>(record.size() * 7 + bytes));
  return record;
}

/// A ready-made item with `bytes` bytes of data.
Bytes Item(uint32_t bytes) {
  Bytes item;
  AppendWords(&item, {28, 100, 5, 6, 7, 8, bytes});
  while (item.size() < 28 + bytes) item.push_back(static_cast<uint8_t>(item.size()));
  return item;
}

class RecordStream final : public marlo::CZrListStream<RecordStream> {
 public:
  uint32_t ItemLength(const void* item) const {
    uint32_t bytes = 0;
    std::memcpy(&bytes, item, sizeof bytes);
    return bytes;
  }

 private:
  friend StreamObject;
  explicit RecordStream(tZRLIST* list) : CZrListStream(list) {}
  ~RecordStream() = default;
};

class ItemStreams : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    blocks_ = plat::LiveBlocks();
    ASSERT_EQ(ZrList_CreateExZ(&list_, 0, 0, 0, 0, 0, 0, 0), S_OK);
    if (GetParam()) {
      stream_ = RecordStream::Make(list_);
      AppendWords(&expected_, {12, 100, 0});
    } else {
      ASSERT_EQ(ZrMetaStream_CreateGeneric(list_, kType, &stream_), S_OK);
      AppendWords(&expected_, {28, 100, 0, 0x01020304, 0x07080506, 0x0C0B0A09, 0x100F0E0D});
    }
    header_ = static_cast<uint32_t>(expected_.size());
  }
  void TearDown() override {
    EXPECT_EQ(stream_->Release(), 0u);
    ZrList_Destroy(list_);
    EXPECT_EQ(plat::LiveBlocks(), blocks_);
  }

  void Fill() {
    for (const uint32_t bytes : {4u, 17u, 5u, 100u}) items_.push_back(GetParam() ? Record(bytes) : Item(bytes - 4));
    for (Bytes& item : items_) {
      void* pointer = item.data();
      ASSERT_EQ(ZrList_InsertList(list_, -1, &pointer, 1), S_OK);
      expected_.insert(expected_.end(), item.begin(), item.end());
    }
    expected_[8] = 4;
  }

  tZRLIST* list_ = nullptr;
  IStream* stream_ = nullptr;
  std::vector<Bytes> items_;
  Bytes expected_;
  uint32_t header_ = 0;
  int64_t blocks_ = 0;
};

TEST_P(ItemStreams, GiveTheSameBytesInPiecesOfAnySize) {
  Fill();
  for (uint32_t piece = 1; piece <= expected_.size(); ++piece) {
    ASSERT_EQ(stream_->Seek(7, STREAM_SEEK_SET, nullptr), S_OK);
    Bytes got;
    for (uint32_t moved = piece; moved == piece;) {
      Bytes buffer(piece);
      const HRESULT result = stream_->Read(buffer.data(), piece, &moved);
      ASSERT_EQ(result, moved == piece ? S_OK : E_FAIL);
      got.insert(got.end(), buffer.begin(), buffer.begin() + moved);
    }
    ASSERT_EQ(got, expected_) << piece;
  }
}

TEST_P(ItemStreams, SkipBytesAndTellTheItem) {
  Fill();
  uint8_t buffer[200];
  uint64_t position = 9;
  EXPECT_EQ(stream_->Seek(1, STREAM_SEEK_CUR, &position), STG_E_INVALIDFUNCTION) << "the header comes first";
  EXPECT_EQ(position, 0u);
  ASSERT_EQ(stream_->Read(buffer, header_, nullptr), S_OK);
  const auto first = static_cast<int64_t>(items_[0].size());
  const auto second = static_cast<int64_t>(items_[1].size());
  EXPECT_EQ(stream_->Seek(-1, STREAM_SEEK_CUR, &position), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream_->Seek(first + second - 2, STREAM_SEEK_CUR, &position), S_OK);
  EXPECT_EQ(position, 1u);
  ASSERT_EQ(stream_->Read(buffer, 3, nullptr), S_OK);
  EXPECT_TRUE(std::equal(buffer, buffer + 3, expected_.begin() + header_ + first + second - 2));
  EXPECT_EQ(stream_->Seek(10'000, STREAM_SEEK_CUR, &position), ZR_E_END_OF_STREAM);
  EXPECT_EQ(position, 4u);
  EXPECT_EQ(stream_->Seek(0, STREAM_SEEK_SET, &position), S_OK);
  EXPECT_EQ(position, 0u);
  ASSERT_EQ(stream_->Read(buffer, header_ + 1, nullptr), S_OK);
  ZrList_DeleteList(list_, 0, 1, 0);
  EXPECT_EQ(stream_->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
  ASSERT_EQ(stream_->Read(buffer, header_ + 10, nullptr), S_OK);
  EXPECT_TRUE(std::equal(items_[1].begin(), items_[1].begin() + 10, buffer + header_)) << "the first one is gone";
  EXPECT_EQ(stream_->Seek(-3, STREAM_SEEK_END, &position), S_OK);
  EXPECT_EQ(position, 3u);
  uint32_t moved = 9;
  EXPECT_EQ(stream_->Read(buffer, 1, &moved), E_FAIL);
  EXPECT_EQ(moved, 0u);
}

TEST_P(ItemStreams, CountWhenTheHeaderIsBegun) {
  uint8_t buffer[64];
  uint32_t moved = 0;
  EXPECT_EQ(stream_->Read(buffer, 64, &moved), E_FAIL);
  EXPECT_EQ(Bytes(buffer, buffer + moved), expected_) << "an empty list is a header";
  ASSERT_EQ(stream_->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
  ASSERT_EQ(stream_->Read(buffer, 1, nullptr), S_OK);
  Fill();
  ASSERT_EQ(stream_->Read(buffer, 11, nullptr), S_OK);
  EXPECT_EQ(buffer[7], 0) << "begun before the items came";
  EXPECT_EQ(stream_->Read(buffer, 0, &moved), E_INVALIDARG);
  EXPECT_EQ(stream_->Read(nullptr, 1, &moved), E_INVALIDARG);
  EXPECT_EQ(stream_->Write(buffer, 1, &moved), E_NOTIMPL);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ItemStreams, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "List" : "Generic"; });

TEST(ListStream, RefusesTheItemItHas) {
  tZRLIST* list = nullptr;
  ASSERT_EQ(ZrList_CreateExZ(&list, 0, 0, 0, 0, 0, 0, 0), S_OK);
  RecordStream* stream = RecordStream::Make(list);
  void** table = *reinterpret_cast<void***>(stream);
  const auto getItemData = reinterpret_cast<HRESULT (*)(void*, const void*, const void**, uint32_t*)>(table[15]);
  const Bytes record = Record(9);
  const void* data = nullptr;
  uint32_t bytes = 0;
  EXPECT_EQ(getItemData(stream, record.data(), &data, &bytes), S_OK);
  EXPECT_EQ(data, record.data());
  EXPECT_EQ(bytes, 9u);
  EXPECT_EQ(getItemData(stream, record.data(), &data, &bytes), E_FAIL);
  EXPECT_EQ(getItemData(stream, nullptr, &data, &bytes), S_OK);
  EXPECT_EQ(getItemData(stream, record.data(), &data, &bytes), S_OK);
  const int64_t before = plat::LiveBlocks();
  reinterpret_cast<void* (*)(void*, uint32_t)>(table[14])(stream, 1);
  EXPECT_EQ(plat::LiveBlocks(), before - 1);
  ZrList_Destroy(list);

  IStream* none = nullptr;
  ASSERT_EQ(ZrMetaStream_CreateGeneric(nullptr, kType, &none), S_OK);
  EXPECT_EQ(none->Read(&bytes, 4, nullptr), ZR_E_END_OF_STREAM);
  none->Release();
}

}  // namespace
