// SPDX-License-Identifier: Apache-2.0
// The stream over an open file that others use too: a position of its own, set before each transfer.
#include <algorithm>

#include "marlo110k/errors.h"
#include "marlo110k/streams.h"
#include "platform/base/stream_object.h"

namespace marlo {
namespace {

HRESULT LastFailure() { return ZrErrorHandler_TranslateWin32Error(plat::LastError()); }

class FileStream final : public plat::StreamObject<FileStream> {
 public:
  HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    if (bytesRead != nullptr) *bytesRead = 0;
    if (buffer == nullptr) return STG_E_INVALIDPOINTER;
    uint32_t moved = 0;
    const bool succeeded = MoveFile() && ZrReadFile(file_, buffer, bytes, &moved) != 0;
    position_ += moved;
    if (bytesRead != nullptr) *bytesRead = moved;
    return succeeded ? S_OK : LastFailure();
  }

  HRESULT Write(const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    if (bytesWritten != nullptr) *bytesWritten = 0;
    if (data == nullptr) return STG_E_INVALIDPOINTER;
    uint32_t moved = 0;
    const bool succeeded = MoveFile() && plat::WriteFile(file_, data, bytes, &moved);
    position_ += moved;
    if (moved != 0) size_ = std::max(size_, position_);
    if (bytesWritten != nullptr) *bytesWritten = moved;
    return succeeded ? S_OK : LastFailure();
  }

  HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) override {
    const uint64_t bases[] = {0, position_, size_};
    int64_t target = 0;
    const bool valid = origin <= STREAM_SEEK_END && !(origin == STREAM_SEEK_END && move > 0) &&
                       !__builtin_add_overflow(static_cast<int64_t>(bases[origin]), move, &target) && target >= 0;
    if (valid) position_ = static_cast<uint64_t>(target);
    if (newPosition != nullptr) *newPosition = position_;
    return valid ? S_OK : STG_E_INVALIDFUNCTION;
  }

  HRESULT Clone(IStream** stream) override {
    if (stream == nullptr) return STG_E_INVALIDPOINTER;
    FileStream* clone = Make(file_, size_);
    *stream = clone;
    if (clone == nullptr) return E_OUTOFMEMORY;
    clone->position_ = position_;
    return S_OK;
  }

 private:
  friend StreamObject;
  FileStream(plat::File* file, uint64_t size) : file_(file), size_(size) {}
  ~FileStream() = default;

  bool MoveFile() const { return plat::SeekFile(file_, static_cast<int64_t>(position_), plat::kSeekStart, nullptr); }

  plat::File* file_;
  uint64_t position_ = 0;
  uint64_t size_;
  std::atomic<uint32_t> references_{1};
};

}  // namespace
}  // namespace marlo

HRESULT ZrCreateStreamFromFile(plat::File* file, IStream** stream) noexcept {
  if (stream != nullptr) *stream = nullptr;
  if (file == nullptr || stream == nullptr) return E_INVALIDARG;
  uint64_t size = 0;
  if (!plat::GetFileBytes(file, &size)) return marlo::LastFailure();
  *stream = marlo::FileStream::Make(file, size);
  return *stream == nullptr ? E_OUTOFMEMORY : S_OK;
}
