// SPDX-License-Identifier: Apache-2.0
// Persistent settings ("metrics"): small typed values with numbers for names, below a product's key.
//
// The key is Software\\COMPANY\\PRODUCT\\MAJOR.MINOR\\Metrics\\SUBKEY for a version word of 1.0 or more, as
// ZrKernel_GetVersion gives, else Software\\COMPANY\\PRODUCT\\Metrics\\SUBKEY; SUBKEY may have several levels. Four
// types of value can stand side by side under one id: numbers, strings, binary data and multi-strings. The sign of an
// id is dropped. Names don't distinguish case.
//
// Every read has an answer for a value that is missing, so that a first run needs no error handling. A null handle and
// one whose key couldn't be opened read as if all values were missing, and refuse to be written. kZrKernelMetric
// stands for the library's own settings in every read and in ZrSetMetric; other writes refuse it.
//
// Values are read from the store at each call and written to it before the call returns: other processes see them at
// once. Reads and writes may come from any thread; a handle is opened and closed by one owner, while nobody uses it.
// None of this is for the render thread.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/stream.h"
#include "marlo110k/export.h"

struct ZrMetricKey;
/// An open settings key.
using HZRMETRIC = ZrMetricKey*;

/// Stands for the library's own settings key.
inline const HZRMETRIC kZrKernelMetric = reinterpret_cast<HZRMETRIC>(static_cast<intptr_t>(-1));

/// Longest path of a key, in characters.
inline constexpr uint32_t kZrMetricPathCharacters = 260;
/// Largest stream that ZrSetMetricStream stores, in bytes.
inline constexpr uint32_t kZrMetricStreamBytes = 2048;

/// Types of stored values.
enum ZRREG_TYPE : uint32_t {
  ZRREG_SZ = 1,        ///< A string with its terminator.
  ZRREG_BINARY = 3,    ///< Bytes.
  ZRREG_DWORD = 4,     ///< A 32-bit number.
  ZRREG_MULTI_SZ = 7,  ///< Strings, each with its terminator, and one more behind the last.
};

/// The trees that hold all keys.
enum ZRREG_ROOT : uint32_t {
  ZRREG_CLASSES_ROOT = 0x80000000,   ///< Classes of components.
  ZRREG_CURRENT_USER = 0x80000001,   ///< The user's settings.
  ZRREG_LOCAL_MACHINE = 0x80000002,  ///< Settings of all users.
};

// ---- Opening and closing ---------------------------------------------------------------------------

/// Opens the settings of a product of "Orlu Works"; the key is made when it is missing.
/// @param metric receives the handle; must hold null. @param subkey null or empty for the product's own settings.
/// @return S_OK; ZR_S_NO_CHANGE (nothing is opened) when `metric` holds a handle; E_POINTER without an out,
/// E_INVALIDARG for a null name, E_OUTOFMEMORY. When the key can't be opened, or its path is longer than
/// kZrMetricPathCharacters, the code is 0x8007xxxx with the platform's error number, and the handle is given all the
/// same: its reads find nothing. Free with ZrMetric_Close.
ZR_API HRESULT ZrMetric_Open(HZRMETRIC* metric, const char16_t* product, uint32_t version,
                             const char16_t* subkey) noexcept;
/// The same for any company.
ZR_API HRESULT ZrMetric_OpenRegHiveAndVersion(HZRMETRIC* metric, const char16_t* product, uint32_t version,
                                              const char16_t* company, const char16_t* subkey) noexcept;
/// The same for a path in the user's tree, with `subkey`, unless it is null or empty, below it.
ZR_API HRESULT ZrMetric_OpenAppVersion(HZRMETRIC* metric, const char16_t* path, const char16_t* subkey) noexcept;
/// Opens another key of the parent's product: `subkey` is told from the product's "Metrics" key, not from the parent.
/// @param parent null gives E_FAIL. What precedes the first "\\Metrics" of its path is the product.
ZR_API HRESULT ZrMetric_OpenSubKey(HZRMETRIC* metric, HZRMETRIC parent, const char16_t* subkey) noexcept;
/// Closes a handle; null is allowed.
ZR_API void ZrMetric_Close(HZRMETRIC metric) noexcept;
/// Closes a handle and deletes its key with all below it. @return S_OK, E_FAIL for null or when nothing was deleted.
ZR_API HRESULT ZrMetric_CloseAndDeleteKey(HZRMETRIC metric) noexcept;

// ---- Numbers ---------------------------------------------------------------------------------------

/// Reads a number; 0 when it is missing.
ZR_API int32_t ZrGetMetric(HZRMETRIC metric, int32_t id) noexcept;
/// Reads a number and clamps it, or the default in its place, to minimum and maximum. Equal bounds don't clamp.
ZR_API int32_t ZrGetMetricEx(HZRMETRIC metric, int32_t id, int32_t minimum, int32_t maximum,
                             int32_t defaultValue) noexcept;
/// True when the number, or the default in its place, isn't 0.
ZR_API bool ZrGetMetricBool(HZRMETRIC metric, int32_t id, int32_t defaultValue) noexcept;
/// Writes a number. @return S_OK or E_FAIL.
ZR_API HRESULT ZrSetMetric(HZRMETRIC metric, int32_t id, int32_t value) noexcept;
/// Reads a number that has a free name; the default when it is missing.
ZR_API int32_t ZrGetMetricUsingName(HZRMETRIC metric, const char16_t* name, int32_t defaultValue) noexcept;
/// Writes a number under a free name. @return S_OK; 0x8007xxxx; E_FAIL for a handle without a key.
ZR_API HRESULT ZrSetMetricUsingName(HZRMETRIC metric, const char16_t* name, int32_t value) noexcept;

// ---- Strings ---------------------------------------------------------------------------------------

/// Reads a string into `size` characters and zeroes the rest.
/// @param defaultText taken, cut to fit, for a string that is missing or doesn't fit, and for a stored empty one unless
/// `keepEmpty` is set; null for none.
/// @return the length in characters, without the terminator.
ZR_API uint32_t ZrGetMetricStringEx(HZRMETRIC metric, int32_t id, char16_t* buffer, uint32_t size,
                                    const char16_t* defaultText, int32_t keepEmpty) noexcept;
/// Writes a string; null writes an empty value. @return S_OK or E_FAIL.
ZR_API HRESULT ZrSetMetricString(HZRMETRIC metric, int32_t id, const char16_t* text) noexcept;
/// Reads a multi-string in the same way. The default is one string.
/// @return the characters stored, terminators included; for a default its length without the terminator.
ZR_API uint32_t ZrGetMetricMultiStringEx(HZRMETRIC metric, int32_t id, char16_t* buffer, uint32_t size,
                                         const char16_t* defaultText, int32_t keepEmpty) noexcept;
/// Writes exactly `characters` characters, which include all terminators. @return S_OK or E_FAIL.
ZR_API HRESULT ZrSetMetricMultiString(HZRMETRIC metric, int32_t id, const char16_t* data, uint32_t characters) noexcept;

// ---- Binary data -----------------------------------------------------------------------------------

/// Reads bytes into `size` bytes and zeroes the rest.
/// @return the bytes read; 0 when they are missing or don't fit.
ZR_API uint32_t ZrGetMetricBinary(HZRMETRIC metric, int32_t id, void* buffer, uint32_t size) noexcept;
/// The same, telling the reason.
/// @param needed receives the stored size; required (E_INVALIDARG).
/// @return S_OK; S_FALSE when missing; ZR_E_BUFFER_TOO_SMALL with as much as fits; ZR_E_NOT_FOUND without a key.
ZR_API HRESULT ZrGetMetricBinaryEx(HZRMETRIC metric, int32_t id, void* buffer, uint32_t size,
                                   uint32_t* needed) noexcept;
/// Writes bytes. @return S_OK or E_FAIL.
ZR_API HRESULT ZrSetMetricBinary(HZRMETRIC metric, int32_t id, const void* data, uint32_t bytes) noexcept;
/// Rewinds `stream` and writes stored bytes into it.
/// @return S_OK; E_POINTER for a null stream; E_UNEXPECTED when nothing is stored; the stream's failure.
ZR_API HRESULT ZrGetMetricStream(HZRMETRIC metric, int32_t id, IStream* stream) noexcept;
/// Writes all that a stream over a memory block holds. The stream's position stays.
/// @return S_OK; E_POINTER for a null stream; E_UNEXPECTED for an empty one; E_INVALIDARG for more than
/// kZrMetricStreamBytes, then for a stream without a block; E_FAIL.
ZR_API HRESULT ZrSetMetricStream(HZRMETRIC metric, int32_t id, IStream* stream) noexcept;

// ---- Any type --------------------------------------------------------------------------------------

/// Reads a value of any type under the name that a number with this id has.
/// @param type the type that it must have. @param size of the buffer in bytes. @param needed optional: the size wanted.
/// @return S_OK; E_UNEXPECTED without a key; ZR_E_NOT_FOUND when missing or of another type; ZR_E_BUFFER_TOO_SMALL.
/// A string gets a terminator behind its data; where there is no room and its last character isn't one, the
/// terminator replaces that character, the size wanted grows by it, and the buffer counts as too small.
ZR_API HRESULT ZrGetMetricAny(HZRMETRIC metric, int32_t id, uint32_t type, void* buffer, uint32_t size,
                              uint32_t* needed) noexcept;
/// Looks for a value. @return 0 when it is there with this type, else 1.
ZR_API int32_t ZrDoesMetricExist(HZRMETRIC metric, int32_t id, uint32_t type) noexcept;
/// Deletes a value. @return S_OK; E_FAIL, also when it is missing; 1 for a handle without a key.
ZR_API HRESULT ZrDeleteMetric(HZRMETRIC metric, int32_t id, uint32_t type) noexcept;
/// Deletes a value by its stored name, whatever its type. @param type isn't looked at.
ZR_API HRESULT ZrDeleteMetricUsingName(HZRMETRIC metric, const char16_t* name, uint32_t type) noexcept;
/// Writes the name of a value for display: "D7", "S7", "B7" or "Z7"; an empty text for another type. A number's stored
/// name is the bare "7".
/// @param buffer at least 16 characters; null is ignored.
ZR_API void ZrMetricGetName(int32_t id, uint32_t type, char16_t* buffer) noexcept;

// ---- Deleting keys ---------------------------------------------------------------------------------
//
// These work on the user's and the machine's tree. They give S_OK when all is gone, which it also is when it never
// was there, else E_FAIL; E_INVALIDARG for a null name.

/// Deletes a key with all below it; without `subkey` the whole "Metrics" key of the product of "Orlu Works".
ZR_API HRESULT ZrMetric_DeleteKey(const char16_t* product, uint32_t version, const char16_t* subkey) noexcept;
/// The same for any company.
ZR_API HRESULT ZrMetric_DeleteKeyHiveAndVersion(const char16_t* product, uint32_t version, const char16_t* company,
                                                const char16_t* subkey) noexcept;
/// Deletes all of a version of a product of "Orlu Works", or without a version all of the product.
ZR_API HRESULT ZrMetric_DeleteAll(const char16_t* product, uint32_t version) noexcept;
/// The same for any company.
ZR_API HRESULT ZrMetric_DeleteAllHiveAndVersion(const char16_t* product, uint32_t version,
                                                const char16_t* company) noexcept;
/// The same as ZrMetric_DeleteAll, in the user's tree only.
ZR_API HRESULT ZrMetric_DeleteUserMetrics(const char16_t* product, uint32_t version) noexcept;
/// Deletes a key with all below it. @param root one of ZRREG_ROOT.
/// @return 1 when it is gone or never was there, else 0; also 0 for a null or empty path.
ZR_API int32_t ZrRegDeleteKey(uint32_t root, const char16_t* subkey) noexcept;

// ---- Looking around --------------------------------------------------------------------------------

/// Counts the sub-keys of a key. @param maxNameLength optional: characters of the longest name and its terminator, 0
/// when there are no sub-keys. @return the number; 0 for a missing key or another root.
ZR_API uint32_t ZrRegGetSubKeyCount(uint32_t root, const char16_t* subkey, uint32_t* maxNameLength) noexcept;
/// The name of the sub-key number `index` in sorted order, cut to `size` characters.
/// @return 1; 0 with an empty text when there is none.
ZR_API int32_t ZrRegGetSubKeyName(uint32_t root, const char16_t* subkey, uint32_t index, char16_t* buffer,
                                  uint32_t size) noexcept;
/// The stored name of the value number `index` of a key in sorted order, and its type.
/// @param type optional. @return 1; 0 with an empty text when there is none.
ZR_API int32_t ZrRegGetValueName(uint32_t root, const char16_t* subkey, uint32_t index, char16_t* buffer, uint32_t size,
                                 uint32_t* type) noexcept;
