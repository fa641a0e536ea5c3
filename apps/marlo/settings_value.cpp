// SPDX-License-Identifier: Apache-2.0
// Turns values of settings into texts and back.
#include "settings_value.h"

#include <cstring>
#include <optional>

#include "errors.h"
#include "numbers.h"
#include "unicode.h"

namespace host {
namespace {

constexpr uint32_t kTextCharacters = 1U << 20;
constexpr char kDigits[] = "0123456789abcdef";

struct TypeName {
  uint32_t type;
  const char* name;
  char16_t letter;  ///< First character of the stored name; 0 for none.
};
constexpr TypeName kTypes[] = {{ZRREG_DWORD, "number", 0},
                               {ZRREG_SZ, "string", u'S'},
                               {ZRREG_BINARY, "binary", u'B'},
                               {ZRREG_MULTI_SZ, "multi", u'Z'}};

template <typename Element>
StoredBytes BytesOf(const Element* elements, size_t count) {
  StoredBytes bytes(count * sizeof(Element));
  if (count != 0) std::memcpy(bytes.data(), elements, bytes.size());
  return bytes;
}

StoredBytes ParseNumber32(const std::string& text) {
  const bool isNegative = text.starts_with('-');
  const std::optional<uint64_t> count = ParseCount(isNegative ? text.substr(1) : text);
  if (!count || *count > (isNegative ? 0x80000000U : UINT32_MAX)) {
    throw UsageError("\"" + text + "\" is no number of 32 bits.");
  }
  const auto number = static_cast<uint32_t>(isNegative ? 0 - *count : *count);
  return BytesOf(&number, 1);
}

StoredBytes ParseDigits(const std::string& text) {
  StoredBytes bytes;
  int high = -1;
  for (const char c : text) {
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
    const char* digit = lower != 0 ? std::strchr(kDigits, lower) : nullptr;
    if (digit == nullptr) throw UsageError("\"" + text + "\" isn't made of hexadecimal digits.");
    const int value = static_cast<int>(digit - kDigits);
    if (high >= 0) bytes.push_back(static_cast<char>(high << 4 | value));
    high = high >= 0 ? -1 : value;
  }
  if (high >= 0) throw UsageError("A byte takes two hexadecimal digits.");
  return bytes;
}

Json ReadBinary(HZRMETRIC metric, int32_t id) {
  uint32_t bytes = 0;
  ZrGetMetricBinaryEx(metric, id, nullptr, 0, &bytes);
  std::string data(bytes, '\0');
  data.resize(ZrGetMetricBinary(metric, id, data.data(), bytes));
  std::string digits;
  for (const char c : data) {
    digits += kDigits[static_cast<unsigned char>(c) >> 4];
    digits += kDigits[c & 15];
  }
  return digits;
}

Json ReadTexts(HZRMETRIC metric, int32_t id) {
  std::u16string buffer(kTextCharacters, u'\0');
  const uint32_t characters = ZrGetMetricMultiStringEx(metric, id, buffer.data(), kTextCharacters, nullptr, 1);
  Json texts = Json::array();
  for (size_t at = 0; at < characters && buffer[at] != 0;) {
    const std::u16string text = buffer.c_str() + at;
    texts.push_back(ToUtf8(text));
    at += text.size() + 1;
  }
  return texts;
}

}  // namespace

StoredValue::StoredValue(const std::u16string& storedName, uint32_t storedType) : name(storedName), type(storedType) {
  for (const TypeName& row : kTypes) {
    if (row.type != type || (row.letter != 0 && !name.starts_with(row.letter))) continue;
    const auto number = ParseCount(ToUtf8(name.substr(row.letter != 0 ? 1 : 0)));
    if (number && *number <= INT32_MAX) id = static_cast<int32_t>(*number);
  }
}

std::string StoredValue::IdText() const { return id >= 0 ? std::to_string(id) : ToUtf8(name); }

std::string NameOfType(uint32_t type) {
  for (const TypeName& row : kTypes) {
    if (row.type == type) return row.name;
  }
  return std::to_string(type);
}

uint32_t TypeOfName(const std::string& name) {
  for (const TypeName& row : kTypes) {
    if (name == row.name) return row.type;
  }
  throw UsageError("\"" + name + "\" is no type: number, string, binary or multi.");
}

StoredBytes ParseValue(uint32_t type, const std::vector<std::string>& texts) {
  if (type == ZRREG_DWORD) return ParseNumber32(texts.front());
  if (type == ZRREG_BINARY) return ParseDigits(texts.front());
  std::u16string all;
  for (const std::string& text : texts) {
    if (type == ZRREG_MULTI_SZ && text.empty()) throw UsageError("An empty text would end the list.");
    all += ToUtf16(text) + u'\0';
  }
  if (type == ZRREG_MULTI_SZ) all += u'\0';
  return BytesOf(all.data(), all.size());
}

HRESULT WriteValue(HZRMETRIC metric, int32_t id, uint32_t type, const StoredBytes& bytes) {
  const auto size = static_cast<uint32_t>(bytes.size());
  if (type == ZRREG_BINARY) return ZrSetMetricBinary(metric, id, bytes.data(), size);
  if (type == ZRREG_DWORD) {
    int32_t number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    return ZrSetMetric(metric, id, number);
  }
  std::u16string text(size / sizeof(char16_t), u'\0');
  std::memcpy(text.data(), bytes.data(), size);
  if (type == ZRREG_SZ) return ZrSetMetricString(metric, id, text.c_str());
  return ZrSetMetricMultiString(metric, id, text.data(), static_cast<uint32_t>(text.size()));
}

Json ReadValue(HZRMETRIC metric, const StoredValue& value) {
  if (value.type == ZRREG_DWORD) {
    return value.id >= 0 ? ZrGetMetric(metric, value.id) : ZrGetMetricUsingName(metric, value.name.c_str(), 0);
  }
  if (value.id < 0) return nullptr;
  if (value.type == ZRREG_BINARY) return ReadBinary(metric, value.id);
  if (value.type == ZRREG_MULTI_SZ) return ReadTexts(metric, value.id);
  std::u16string buffer(kTextCharacters, u'\0');
  ZrGetMetricStringEx(metric, value.id, buffer.data(), kTextCharacters, nullptr, 1);
  return ToUtf8(buffer.c_str());
}

std::string TextOfValue(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number()) return std::to_string(value.get<int32_t>());
  std::string line;
  for (const Json& text : value) line += (line.empty() ? "" : "\t") + text.get<std::string>();
  return line;
}

}  // namespace host
