// SPDX-License-Identifier: Apache-2.0
// The base of every reference-counted interface, and the class factory.
#pragma once

#include "marlo110k/contract/guid.h"
#include "marlo110k/contract/hresult.h"

inline constexpr GUID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Slots 0 to 2 of every interface. No interface has a virtual destructor: it would take two
/// slots of the table and shift all that follow; an object ends when Release reaches zero.
struct IUnknown {
  /// Gives the interface `iid` with a reference of its own, or E_NOINTERFACE with null in `object`.
  virtual HRESULT QueryInterface(REFIID iid, void** object) = 0;
  /// @return the new count; a hint only.
  virtual uint32_t AddRef() = 0;
  /// @return the new count; the object is gone when it is 0.
  virtual uint32_t Release() = 0;

 protected:
  ~IUnknown() = default;
};

/// Makes the objects of one class; slots 3 and 4.
struct IClassFactory : IUnknown {
  virtual HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** object) = 0;
  virtual HRESULT LockServer(int32_t lock) = 0;

 protected:
  ~IClassFactory() = default;
};
