// SPDX-License-Identifier: Apache-2.0
// The growable stream: a block shared by a stream and its clones, and a position in each.
#include <algorithm>
#include <cstring>
#include <limits>

#include "marlo110k/platform/stream.h"
#include "platform/base/stream_object.h"

namespace plat {
namespace {

constexpr uint64_t kMaximumBytes = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kStreamType = 2;
/// Known to this file only: how a stream is told to be of this kind.
constexpr IID kBlockStreamId = {0x3C1B9E52, 0x7D04, 0x4F6A, {0x91, 0x2E, 0x5B, 0x88, 0xD0, 0x47, 0xA6, 0x13}};

/// What a stream and its clones share.
struct SharedBlock {
  void* data = nullptr;
  uint64_t bytes = 0;  ///< The stream's size; the block may be longer, and is zero from here on.
  bool owned = false;
  std::atomic<uint32_t> users{1};

  HRESULT Reserve(uint64_t needed) {
    if (needed > kMaximumBytes) return STG_E_MEDIUMFULL;
    const uint64_t present = BlockBytes(data);
    if (needed <= present) return S_OK;
    // Doubling keeps a long row of small writes linear.
    return Reallocate(std::max(needed, std::min(2 * present, kMaximumBytes)));
  }
  HRESULT Resize(uint64_t wanted) {
    if (wanted > kMaximumBytes) return STG_E_MEDIUMFULL;
    const HRESULT result = Reallocate(wanted);
    if (SUCCEEDED(result)) bytes = wanted;
    return result;
  }

 private:
  HRESULT Reallocate(uint64_t wanted) {
    void* moved = ReallocateZeroed(data, wanted);
    if (moved == nullptr) return E_OUTOFMEMORY;
    data = moved;
    return S_OK;
  }
};

void Leave(SharedBlock* shared) {
  if (shared->users.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (shared->owned) FreeBlock(shared->data);
  shared->~SharedBlock();
  FreeBlock(shared);
}

class BlockStream final : public StreamObject<BlockStream> {
 public:
  HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    if (bytesRead != nullptr) *bytesRead = 0;
    if (buffer == nullptr) return STG_E_INVALIDPOINTER;
    const uint32_t taken = static_cast<uint32_t>(std::min<uint64_t>(bytes, BytesLeft()));
    if (taken != 0) std::memcpy(buffer, At(position_), taken);
    position_ += taken;
    if (bytesRead != nullptr) *bytesRead = taken;
    return S_OK;
  }

  HRESULT Write(const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    if (bytesWritten != nullptr) *bytesWritten = 0;
    if (data == nullptr) return STG_E_INVALIDPOINTER;
    if (bytes == 0) return S_OK;
    if (position_ > kMaximumBytes) return STG_E_MEDIUMFULL;
    const HRESULT result = shared_->Reserve(position_ + bytes);
    if (FAILED(result)) return result;
    std::memcpy(At(position_), data, bytes);
    position_ += bytes;
    shared_->bytes = std::max(shared_->bytes, position_);
    if (bytesWritten != nullptr) *bytesWritten = bytes;
    return S_OK;
  }

  HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) override {
    const uint64_t bases[] = {0, position_, shared_->bytes};
    int64_t target = 0;
    const bool valid = origin <= STREAM_SEEK_END &&
                       !__builtin_add_overflow(static_cast<int64_t>(bases[origin]), move, &target) && target >= 0;
    if (valid) position_ = static_cast<uint64_t>(target);
    if (newPosition != nullptr) *newPosition = position_;
    return valid ? S_OK : STG_E_INVALIDFUNCTION;
  }

  HRESULT SetSize(uint64_t bytes) override { return shared_->Resize(bytes); }

  HRESULT CopyTo(IStream* target, uint64_t bytes, uint64_t* bytesRead, uint64_t* bytesWritten) override {
    // Pieces in between, since a target on the same block may move it; the length is fixed before, since such a
    // target may also lengthen what is being read.
    uint64_t left = std::min(bytes, BytesLeft());
    uint64_t total = 0;
    uint64_t stored = 0;
    HRESULT result = target == nullptr ? STG_E_INVALIDPOINTER : S_OK;
    while (left != 0 && SUCCEEDED(result)) {
      uint8_t piece[4096];
      uint32_t taken = 0;
      uint32_t written = 0;
      Read(piece, static_cast<uint32_t>(std::min<uint64_t>(left, sizeof piece)), &taken);
      if (taken == 0) break;
      result = target->Write(piece, taken, &written);
      total += taken;
      stored += written;
      left -= taken;
      if (written < taken) break;
    }
    if (bytesRead != nullptr) *bytesRead = total;
    if (bytesWritten != nullptr) *bytesWritten = stored;
    return result;
  }

  HRESULT Commit(uint32_t) override { return S_OK; }
  HRESULT Revert() override { return S_OK; }
  HRESULT LockRegion(uint64_t, uint64_t, uint32_t) override { return STG_E_INVALIDFUNCTION; }
  HRESULT UnlockRegion(uint64_t, uint64_t, uint32_t) override { return STG_E_INVALIDFUNCTION; }

  HRESULT Stat(STATSTG* stat, uint32_t) override {
    if (stat == nullptr) return STG_E_INVALIDPOINTER;
    *stat = {};
    stat->type = kStreamType;
    stat->cbSize = shared_->bytes;
    return S_OK;
  }

  HRESULT Clone(IStream** stream) override {
    if (stream == nullptr) return STG_E_INVALIDPOINTER;
    shared_->users.fetch_add(1, std::memory_order_relaxed);
    BlockStream* clone = Make(shared_);
    if (clone == nullptr) {
      shared_->users.fetch_sub(1, std::memory_order_relaxed);
    } else {
      clone->position_ = position_;
    }
    *stream = clone;
    return clone == nullptr ? E_OUTOFMEMORY : S_OK;
  }

  void* Block() const { return shared_->data; }

 private:
  friend StreamObject;
  explicit BlockStream(SharedBlock* shared) : shared_(shared) {}
  ~BlockStream() { Leave(shared_); }

  static bool Answers(REFIID iid) {
    return StreamObject::Answers(iid) || iid == IID_ISequentialStream || iid == kBlockStreamId;
  }
  uint64_t BytesLeft() const { return position_ < shared_->bytes ? shared_->bytes - position_ : 0; }
  uint8_t* At(uint64_t offset) const { return static_cast<uint8_t*>(shared_->data) + offset; }

  SharedBlock* shared_;
  uint64_t position_ = 0;
  std::atomic<uint32_t> references_{1};
};

}  // namespace

HRESULT CreateStreamOnBlock(void* block, int32_t freeOnRelease, IStream** stream) noexcept {
  if (stream == nullptr) return E_INVALIDARG;
  *stream = nullptr;
  void* data = block == nullptr ? AllocateZeroed(0) : block;
  void* room = data == nullptr ? nullptr : AllocateZeroed(sizeof(SharedBlock));
  if (room != nullptr) {
    SharedBlock* shared = new (room) SharedBlock;
    shared->data = data;
    shared->bytes = BlockBytes(data);
    *stream = BlockStream::Make(shared);
    if (*stream != nullptr) {
      shared->owned = freeOnRelease != 0;
      return S_OK;
    }
    Leave(shared);
  }
  if (block == nullptr) FreeBlock(data);
  return E_OUTOFMEMORY;
}

HRESULT GetBlockOfStream(IStream* stream, void** block) noexcept {
  if (block == nullptr) return E_INVALIDARG;
  *block = nullptr;
  void* object = nullptr;
  if (stream == nullptr || FAILED(stream->QueryInterface(kBlockStreamId, &object))) return E_INVALIDARG;
  BlockStream* own = static_cast<BlockStream*>(static_cast<IStream*>(object));
  *block = own->Block();
  own->Release();
  return S_OK;
}

}  // namespace plat
