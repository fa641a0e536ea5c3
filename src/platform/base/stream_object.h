// SPDX-License-Identifier: Apache-2.0
// What every stream class shares: its block, its references, and the answer of the slots it doesn't fill.
#pragma once

#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

#include "marlo110k/contract/stream.h"
#include "platform/base/memory.h"

namespace plat {

/// A stream in one zeroed block of the house heap; the release that reaches zero destroys it and frees the block.
/// `Self` derives from this class, befriends it and holds `std::atomic<uint32_t> references_{1}`.
template <class Self, class Interface = IStream>
class StreamObject : public Interface {
 public:
  /// A new object with one reference, or null when memory is short.
  template <class... Arguments>
  static Self* Make(Arguments&&... arguments) {
    void* block = AllocateZeroed(sizeof(Self));
    return block == nullptr ? nullptr : new (block) Self(std::forward<Arguments>(arguments)...);
  }

  HRESULT QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!Self::Answers(iid)) return E_NOINTERFACE;
    *object = static_cast<Interface*>(this);
    AddRef();
    return S_OK;
  }
  uint32_t AddRef() override { return self().references_.fetch_add(1, std::memory_order_relaxed) + 1; }
  uint32_t Release() override {
    const uint32_t left = self().references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) Destroy();
    return left;
  }

  HRESULT Read(void*, uint32_t, uint32_t*) override { return E_NOTIMPL; }
  HRESULT Write(const void*, uint32_t, uint32_t*) override { return E_NOTIMPL; }
  HRESULT Seek(int64_t, uint32_t, uint64_t*) override { return E_NOTIMPL; }
  HRESULT SetSize(uint64_t) override { return E_NOTIMPL; }
  HRESULT CopyTo(IStream*, uint64_t, uint64_t*, uint64_t*) override { return E_NOTIMPL; }
  HRESULT Commit(uint32_t) override { return E_NOTIMPL; }
  HRESULT Revert() override { return E_NOTIMPL; }
  HRESULT LockRegion(uint64_t, uint64_t, uint32_t) override { return E_NOTIMPL; }
  HRESULT UnlockRegion(uint64_t, uint64_t, uint32_t) override { return E_NOTIMPL; }
  HRESULT Stat(STATSTG*, uint32_t) override { return E_NOTIMPL; }
  HRESULT Clone(IStream**) override { return E_NOTIMPL; }

 protected:
  StreamObject() = default;
  ~StreamObject() = default;
  StreamObject(const StreamObject&) = delete;
  StreamObject& operator=(const StreamObject&) = delete;

  static bool Answers(REFIID iid) { return iid == IID_IUnknown || iid == IID_IStream; }
  /// Ends the object whatever its count: what a failed creation does.
  void Destroy() { DeleteObject(1); }
  /// What a deleter's slot does: ends the object, and frees its block when bit 0 of `flags` is set.
  void* DeleteObject(uint32_t flags) {
    Self* object = &self();
    object->~Self();
    if ((flags & 1) != 0) FreeBlock(object);
    return object;
  }

 private:
  Self& self() { return static_cast<Self&>(*this); }
};

}  // namespace plat
