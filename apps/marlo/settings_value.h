// SPDX-License-Identifier: Apache-2.0
// Values of settings as the command line writes and reads them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "json_output.h"
#include "marlo110k/metric.h"

namespace host {

inline constexpr uint32_t kNameCharacters = 256;

/// A value by its place in a key.
struct StoredValue {
  std::u16string name;  ///< As stored.
  int32_t id = -1;      ///< Or -1 for a free name.
  uint32_t type = 0;

  StoredValue(const std::u16string& storedName, uint32_t storedType);
  StoredValue(int32_t valueId, uint32_t valueType) : id(valueId), type(valueType) {}
  std::string IdText() const;
};

/// What is to be stored, in the bytes of its type.
using StoredBytes = std::vector<char>;

/// "number", "string", "binary", "multi", or another type's number.
std::string NameOfType(uint32_t type);
/// Throws UsageError for another word.
uint32_t TypeOfName(const std::string& name);

/// Throws UsageError for texts that aren't values of the type. Numbers go from -2147483648 to 4294967295.
StoredBytes ParseValue(uint32_t type, const std::vector<std::string>& texts);
HRESULT WriteValue(HZRMETRIC metric, int32_t id, uint32_t type, const StoredBytes& bytes);
/// A number, a text, hexadecimal digits, or an array of texts; null for a value of another kind.
Json ReadValue(HZRMETRIC metric, const StoredValue& value);
/// The same on one line; texts of a multi-string have tabs between them.
std::string TextOfValue(const Json& value);

}  // namespace host
