// SPDX-License-Identifier: Apache-2.0
// Any row of operations on a window: nothing outside it is read, nothing before it written, whatever the numbers.
#include <array>
#include <limits>

#include "marlo110k/streams.h"
#include "media_input.h"

using fuzzing::Require;

namespace {

constexpr size_t kCapacity = 256;
constexpr size_t kGuardBytes = 16;
constexpr size_t kPieceBytes = 96;

/// What every written byte of the block holds; gaps hold 0.
uint8_t ByteAt(uint64_t position) { return static_cast<uint8_t>(position % 251 + 1); }

/// The operations, each a byte that names it and numbers behind that; zeroes when the input is at its end.
class Script {
 public:
  Script(const uint8_t* data, size_t bytes) : data_(data), left_(bytes) {}
  bool AtEnd() const { return left_ == 0; }
  template <class Number>
  Number Take() {
    Number number = 0;
    const size_t taken = left_ < sizeof number ? left_ : sizeof number;
    std::memcpy(&number, data_, taken);
    data_ += taken;
    left_ -= taken;
    return number;
  }

 private:
  const uint8_t* data_;
  size_t left_;
};

class Window {
 public:
  Window() {
    block_.fill(0xEE);
    for (size_t i = 0; i < kCapacity / 2; ++i) block_[i] = ByteAt(i);
    Require(ZrCreateStreamFromMemory(block_.data(), uint64_t{kCapacity}, uint64_t{kCapacity / 2}, &inner_) == S_OK,
            "memory");
    Require(ZrProtectedStream_CreateFromStream(inner_, &stream_) == S_OK, "window");
  }
  ~Window() {
    Require(stream_->Release() == 0 && inner_->Release() == 0, "references");
    for (size_t i = kCapacity; i < block_.size(); ++i) Require(block_[i] == 0xEE, "the bytes behind the block");
  }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  void Set(bool enabled, bool enforced, uint64_t base, uint64_t length) {
    Require(stream_->SetWindow(enabled, enforced, base, length) == S_OK, "set window");
    enabled_ = enabled;
    enforced_ = enforced;
    base_ = base;
    end_ = length > std::numeric_limits<uint64_t>::max() - base ? std::numeric_limits<uint64_t>::max() : base + length;
  }
  void SetMode(uint32_t mode) {
    Require(stream_->SetReadMode(mode) == S_OK, "mode");
    mode_ = mode;
  }
  void Seek(int64_t move, uint32_t origin) {
    const uint64_t before = Position();
    uint64_t told = 0;
    const HRESULT result = stream_->Seek(move, origin, &told);
    const uint64_t start = enabled_ || enforced_ ? base_ : 0;
    Require(told == (Position() > start ? Position() - start : 0), "the position told");
    if (FAILED(result)) Require(Position() == before, "a failed seek moves nothing");
    if (result == S_OK && origin <= STREAM_SEEK_END) Require(Position() >= start, "a seek before the window");
  }
  void Read(uint32_t bytes) {
    std::array<uint8_t, kPieceBytes> buffer;
    buffer.fill(0xEE);
    const uint64_t start = Position();
    uint32_t moved = 0;
    const HRESULT result = stream_->Read(buffer.data(), bytes, &moved);
    Require(moved <= bytes && Position() == start + moved, "read moves by what it gives");
    Require(moved == 0 || (enabled_ && start >= base_ && SUCCEEDED(result)), "a read where none may be");
    for (uint32_t i = 0; i < moved; ++i) {
      const bool inside = start + i < end_;
      Require(inside || mode_ == ZRPROTECTED_ZERO, "a read past the window");
      Require(buffer[i] == 0 || (inside && buffer[i] == ByteAt(start + i)), "a byte from elsewhere");
    }
    for (size_t i = bytes; i < buffer.size(); ++i) Require(buffer[i] == 0xEE, "the bytes behind the buffer");
  }
  void Write(uint32_t bytes) {
    std::array<uint8_t, kPieceBytes> data;
    const uint64_t start = Position();
    for (uint32_t i = 0; i < data.size(); ++i) data[i] = ByteAt(start + i);
    uint32_t moved = 0;
    stream_->Write(data.data(), bytes, &moved);
    Require(moved <= bytes && Position() == start + moved, "write moves by what it takes");
    Require(moved == 0 || !enforced_ || start >= base_, "a write before the window");
    if (enabled_ && moved != 0 && Position() > end_) end_ = Position();
  }

 private:
  uint64_t Position() const {
    uint64_t position = 0;
    inner_->Seek(0, STREAM_SEEK_CUR, &position);
    Require(position <= kCapacity, "the inner position");
    return position;
  }

  std::array<uint8_t, kCapacity + kGuardBytes> block_;
  IStream* inner_ = nullptr;
  IZrProtectedStream* stream_ = nullptr;
  bool enabled_ = false;
  bool enforced_ = false;
  uint64_t base_ = 0;
  uint64_t end_ = 0;
  uint32_t mode_ = ZRPROTECTED_CUT;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  Window window;
  Script script(data, bytes);
  while (!script.AtEnd()) {
    const auto operation = script.Take<uint8_t>();
    const uint8_t choice = operation >> 4;
    switch (operation & 7) {
      case 0: {
        const auto base = script.Take<uint64_t>();
        window.Set((choice & 1) != 0, (choice & 2) != 0, base, script.Take<uint64_t>());
        break;
      }
      case 1: {  // The same near the block.
        const uint64_t base = script.Take<uint8_t>();
        window.Set((choice & 1) != 0, (choice & 2) != 0, base, script.Take<uint8_t>());
        break;
      }
      case 2:
        window.SetMode(choice & 3);
        break;
      case 3:
        window.Seek(script.Take<int64_t>(), choice & 3);
        break;
      case 4:
      case 5:
        window.Seek(script.Take<int16_t>(), choice & 3);
        break;
      case 6:
        window.Read(script.Take<uint8_t>() % (kPieceBytes + 1));
        break;
      case 7:
        window.Write(script.Take<uint8_t>() % (kPieceBytes + 1));
        break;
    }
  }
  return 0;
}
