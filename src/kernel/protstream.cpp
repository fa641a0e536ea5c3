// SPDX-License-Identifier: Apache-2.0
// The window on another stream: where it starts and ends, and what happens at its edges.
#include <algorithm>
#include <cstring>
#include <limits>

#include "marlo110k/streams.h"
#include "platform/base/stream_object.h"

namespace marlo {
namespace {

class ProtectedStream final : public plat::StreamObject<ProtectedStream, IZrProtectedStream> {
 public:
  HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    if (bytesRead != nullptr) *bytesRead = 0;
    if (inner_ == nullptr) return STG_E_READFAULT;
    if (buffer == nullptr) return STG_E_INVALIDPOINTER;
    if (!enabled_ || (readMode_ != ZRPROTECTED_CUT && readMode_ != ZRPROTECTED_ZERO)) return S_OK;
    const uint64_t position = InnerPosition();
    const bool cuts = readMode_ == ZRPROTECTED_CUT;
    if (position < base_ || (cuts && position > End())) return STG_E_ACCESSDENIED;
    const uint64_t room = position < End() ? End() - position : 0;
    const auto inside = static_cast<uint32_t>(std::min<uint64_t>(bytes, room));
    uint32_t taken = 0;
    inner_->Read(buffer, cuts ? inside : bytes, &taken);
    taken = std::min(taken, bytes);
    if (!cuts) std::memset(static_cast<uint8_t*>(buffer) + inside, 0, bytes - inside);
    innerPosition_ = position + taken;
    if (bytesRead != nullptr) *bytesRead = taken;
    return taken < bytes ? S_FALSE : S_OK;
  }

  HRESULT Write(const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    if (bytesWritten != nullptr) *bytesWritten = 0;
    if (inner_ == nullptr) return STG_E_WRITEFAULT;
    if (data == nullptr) return STG_E_INVALIDPOINTER;
    const uint64_t position = InnerPosition();
    if (writeEnforced_ && position < base_) return STG_E_ACCESSDENIED;
    uint32_t taken = 0;
    const HRESULT result = inner_->Write(data, bytes, &taken);
    innerPosition_ = position + taken;
    if (enabled_ && taken != 0 && innerPosition_ > End()) length_ = innerPosition_ - base_;
    if (bytesWritten != nullptr) *bytesWritten = taken;
    return result;
  }

  HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) override {
    if (newPosition != nullptr) *newPosition = 0;
    if (inner_ == nullptr) return STG_E_INVALIDFUNCTION;
    const uint64_t before = InnerPosition();
    HRESULT result = S_OK;
    if (origin <= STREAM_SEEK_END) {
      result = MoveInner(move, origin);
      if (FAILED(result)) inner_->Seek(static_cast<int64_t>(before), STREAM_SEEK_SET, nullptr);
    }
    const uint64_t position = InnerPosition();
    if (newPosition != nullptr) *newPosition = position > Origin() ? position - Origin() : 0;
    return result;
  }

  HRESULT Clone(IStream** stream) override {
    if (stream == nullptr) return STG_E_INVALIDPOINTER;
    *stream = nullptr;
    if (inner_ == nullptr) return STG_E_INVALIDFUNCTION;
    IStream* innerClone = nullptr;
    HRESULT result = inner_->Clone(&innerClone);
    if (FAILED(result)) return result;
    IZrProtectedStream* clone = nullptr;
    result = Create(innerClone, &clone);
    innerClone->Release();
    *stream = clone;
    return result;
  }

  HRESULT SetWindow(int32_t enabled, int32_t writeEnforced, uint64_t base, uint64_t length) override {
    base_ = base;
    length_ = length;
    enabled_ = enabled != 0;
    writeEnforced_ = writeEnforced != 0;
    return S_OK;
  }

  HRESULT SetReadMode(uint32_t mode) override {
    readMode_ = mode;
    return S_OK;
  }

  HRESULT SetStream(IStream* stream) override {
    uint64_t position = 0;
    if (stream != nullptr) {
      const HRESULT result = stream->Seek(0, STREAM_SEEK_CUR, &position);
      if (FAILED(result)) return result;
      stream->AddRef();
    }
    if (inner_ != nullptr) inner_->Release();
    inner_ = stream;
    innerPosition_ = position;
    return S_OK;
  }

  static HRESULT Create(IStream* stream, IZrProtectedStream** protectedStream) {
    if (protectedStream != nullptr) *protectedStream = nullptr;
    if (stream == nullptr || protectedStream == nullptr) return E_INVALIDARG;
    ProtectedStream* made = Make();
    if (made == nullptr) return E_OUTOFMEMORY;
    const HRESULT result = made->SetStream(stream);
    if (FAILED(result)) {
      made->Destroy();
    } else {
      *protectedStream = made;
    }
    return result;
  }

  /// Wraps what a factory made and gives back the reference that the wrapping took over.
  static HRESULT Wrap(HRESULT made, IStream* plain, IZrProtectedStream** protectedStream) {
    if (FAILED(made)) return made;
    const HRESULT result = Create(plain, protectedStream);
    plain->Release();
    return result;
  }

 private:
  friend StreamObject;
  ProtectedStream() = default;
  ~ProtectedStream() {
    if (inner_ != nullptr) inner_->Release();
  }

  static bool Answers(REFIID iid) { return StreamObject::Answers(iid) || iid == IID_IZrProtectedStream; }

  /// Where positions count from.
  uint64_t Origin() const { return enabled_ || writeEnforced_ ? base_ : 0; }
  /// The window's end; a length that reaches past all positions means no end.
  uint64_t End() const {
    uint64_t end = 0;
    return __builtin_add_overflow(base_, length_, &end) ? std::numeric_limits<uint64_t>::max() : end;
  }
  /// A stream that can't tell its position is taken to be where this one left it.
  uint64_t InnerPosition() {
    uint64_t position = 0;
    if (SUCCEEDED(inner_->Seek(0, STREAM_SEEK_CUR, &position))) innerPosition_ = position;
    return innerPosition_;
  }

  HRESULT MoveInner(int64_t move, uint32_t origin) {
    uint64_t from = 0;
    if (origin == STREAM_SEEK_SET) from = Origin();
    if (origin == STREAM_SEEK_CUR) from = innerPosition_;
    if (origin == STREAM_SEEK_END) {
      if (enabled_) {
        from = End();
      } else {
        // The inner stream knows its end; it may end up before the base, which is then undone.
        uint64_t reached = 0;
        const HRESULT result = inner_->Seek(move, origin, &reached);
        return SUCCEEDED(result) && reached < Origin() ? STG_E_INVALIDFUNCTION : result;
      }
    }
    uint64_t target = 0;
    if (__builtin_add_overflow(from, move, &target) || target > INT64_MAX) return STG_E_INVALIDFUNCTION;
    const bool mayPassEnd = origin == STREAM_SEEK_SET && readMode_ != ZRPROTECTED_CUT;
    if (target < Origin() || (enabled_ && !mayPassEnd && target > End())) return STG_E_INVALIDFUNCTION;
    return inner_->Seek(static_cast<int64_t>(target), STREAM_SEEK_SET, nullptr);
  }

  IStream* inner_ = nullptr;
  uint64_t innerPosition_ = 0;  ///< As last known.
  uint64_t base_ = 0;
  uint64_t length_ = 0;
  bool enabled_ = false;
  bool writeEnforced_ = false;
  std::atomic<uint32_t> references_{1};
  uint32_t readMode_ = ZRPROTECTED_CUT;
};

}  // namespace
}  // namespace marlo

HRESULT ZrProtectedStream_CreateFromStream(IStream* stream, IZrProtectedStream** protectedStream) noexcept {
  return marlo::ProtectedStream::Create(stream, protectedStream);
}

HRESULT ZrProtectedStream_CreateFromFile(plat::File* file, IZrProtectedStream** protectedStream) noexcept {
  if (protectedStream == nullptr) return E_INVALIDARG;
  *protectedStream = nullptr;
  IStream* plain = nullptr;
  const HRESULT made = ZrCreateStreamFromFile(file, &plain);
  return marlo::ProtectedStream::Wrap(made, plain, protectedStream);
}

HRESULT ZrProtectedStream_CreateFromMemory(void* block, uint64_t capacity, uint64_t size,
                                           IZrProtectedStream** protectedStream) noexcept {
  if (protectedStream == nullptr) return E_INVALIDARG;
  *protectedStream = nullptr;
  IStream* plain = nullptr;
  const HRESULT made = ZrCreateStreamFromMemory(block, capacity, size, &plain);
  return marlo::ProtectedStream::Wrap(made, plain, protectedStream);
}

HRESULT ZrProtectedStream_CreateFromMemory(void* block, uint32_t capacity, uint32_t size,
                                           IZrProtectedStream** protectedStream) noexcept {
  return ZrProtectedStream_CreateFromMemory(block, uint64_t{capacity}, uint64_t{size}, protectedStream);
}
