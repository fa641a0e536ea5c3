// SPDX-License-Identifier: Apache-2.0
// Objects that store themselves into a stream, as plug-ins and hosts share them.
#pragma once

#include <cstdint>

#include "marlo110k/contract/stream.h"

inline constexpr GUID IID_IPersist = {0x0000010C, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IPersistStream = {0x00000109, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IPersistStreamInit = {
    0x7FD52380, 0x4E07, 0x101B, {0xAE, 0x2D, 0x08, 0x00, 0x2B, 0x2E, 0xC7, 0x13}};

/// Names the class whose objects understand the stored form.
struct IPersist : IUnknown {
  /// Slot 3.
  virtual HRESULT GetClassID(CLSID* classId) = 0;

 protected:
  ~IPersist() = default;
};

/// Slots 4 to 7.
struct IPersistStream : IPersist {
  /// S_OK when the object changed since it was stored, S_FALSE when not.
  virtual HRESULT IsDirty() = 0;
  virtual HRESULT Load(IStream* stream) = 0;
  /// @param clearDirty non-zero: the object counts as stored afterwards.
  virtual HRESULT Save(IStream* stream, int32_t clearDirty) = 0;
  /// The most bytes that Save would write.
  virtual HRESULT GetSizeMax(uint64_t* bytes) = 0;

 protected:
  ~IPersistStream() = default;
};

/// The same slots 4 to 7, and 8 for an object that starts without a stored form. It derives from IPersist, not
/// from IPersistStream: the two are different interfaces of one object.
struct IPersistStreamInit : IPersist {
  virtual HRESULT IsDirty() = 0;
  virtual HRESULT Load(IStream* stream) = 0;
  virtual HRESULT Save(IStream* stream, int32_t clearDirty) = 0;
  virtual HRESULT GetSizeMax(uint64_t* bytes) = 0;
  /// Slot 8. Sets the object's defaults.
  virtual HRESULT InitNew() = 0;

 protected:
  ~IPersistStreamInit() = default;
};
