// SPDX-License-Identifier: Apache-2.0
// marlo settings: reads, writes, deletes and lists the stored settings of a product.
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "errors.h"
#include "json_output.h"
#include "marlo110k/metric.h"
#include "numbers.h"
#include "settings_value.h"
#include "unicode.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo settings get [options] KEY ID\n"
    "       marlo settings set [options] KEY ID VALUE...\n"
    "       marlo settings delete [options] KEY ID\n"
    "       marlo settings list [options] [KEY]\n"
    "       marlo settings export [options]\n"
    "\n"
    "Works on the settings of a product of Orlu Works. KEY is a path such as \"Kernel\\Transport\", ID a number.\n"
    "\"list\" shows the values below a key, one a line with tabs between key, id, type and value; \"export\" gives\n"
    "all of a product as JSON.\n"
    "\n"
    "options:\n"
    "  --product P     the product; \"Marlo Pro\" without it\n"
    "  --version V     its version, 11.0 without it; 0 for the settings of no version\n"
    "  --type T        number (the default), string, binary (VALUE in hexadecimal digits) or multi (a VALUE each)\n"
    "\n"
    "example:\n"
    "  marlo settings set Kernel 10001 --type string \"My studio\"\n";

constexpr Option kOptions[] = {{"--product", true}, {"--version", true}, {"--type", true}};

/// Whose settings the command line means.
struct Product {
  std::u16string name = u"Marlo Pro";
  uint32_t version = 0x0B000000;

  explicit Product(const Arguments& arguments) {
    if (const std::string* product = arguments.Value("--product")) name = ToUtf16(*product);
    if (const std::string* text = arguments.Value("--version")) version = VersionOf(*text);
    if (name.empty() || name.find(u'\\') != std::u16string::npos) throw UsageError("That is no name of a product.");
  }
  std::u16string Path(const std::u16string& key) const {
    std::u16string path = u"Software\\Orlu Works\\" + name;
    if (version != 0)
      path += ToUtf16("\\" + std::to_string(version >> 24) + "." + std::to_string(version >> 16 & 0xFF));
    return path + u"\\Metrics" + (key.empty() ? u"" : u"\\" + key);
  }

 private:
  static uint32_t VersionOf(const std::string& text) {
    const size_t dot = text.find('.');
    const auto major = ParseCount(text.substr(0, dot));
    const auto minor = dot == std::string::npos ? std::optional<uint64_t>(0) : ParseCount(text.substr(dot + 1));
    // Without a first number there would be no version in the path.
    if (!major || !minor || *major > 255 || *minor > 255 || (*major == 0 && *minor != 0)) {
      throw UsageError("\"" + text + "\" is no version such as 11.0.");
    }
    return static_cast<uint32_t>(*major << 24 | *minor << 16);
  }
};

/// The open settings of a key.
class Metric {
 public:
  Metric(const Product& product, const std::u16string& key, const std::string& subject) {
    const HRESULT result = ZrMetric_Open(&metric_, product.name.c_str(), product.version, key.c_str());
    if (FAILED(result)) {
      ZrMetric_Close(metric_);
      throw Failure(result, subject);
    }
  }
  ~Metric() { ZrMetric_Close(metric_); }
  Metric(const Metric&) = delete;
  Metric& operator=(const Metric&) = delete;
  HZRMETRIC Handle() const { return metric_; }

 private:
  HZRMETRIC metric_ = nullptr;
};

int32_t IdOf(const std::string& text) {
  const std::optional<uint64_t> id = ParseCount(text);
  if (!id || *id > INT32_MAX) throw UsageError("\"" + text + "\" is no id, a number up to 2147483647.");
  return static_cast<int32_t>(*id);
}

/// The values of a key that exists; none is made by looking.
std::vector<StoredValue> ValuesOf(const std::u16string& path) {
  std::vector<StoredValue> values;
  char16_t name[kNameCharacters];
  uint32_t type = 0;
  for (uint32_t i = 0; ZrRegGetValueName(ZRREG_CURRENT_USER, path.c_str(), i, name, kNameCharacters, &type) != 0; ++i) {
    values.push_back(StoredValue(name, type));
  }
  return values;
}

bool IsThere(const Product& product, const std::u16string& key, int32_t id, uint32_t type) {
  for (const StoredValue& value : ValuesOf(product.Path(key))) {
    if (value.id == id && value.type == type) return true;
  }
  return false;
}

/// Calls `visit(key, values)` for a key and all below it, in the order of names.
template <typename Visit>
void Walk(const Product& product, const std::u16string& key, const Visit& visit) {
  const std::u16string path = product.Path(key);
  visit(key, ValuesOf(path));
  uint32_t longest = 0;
  const uint32_t count = ZrRegGetSubKeyCount(ZRREG_CURRENT_USER, path.c_str(), &longest);
  std::vector<std::u16string> names;
  for (uint32_t i = 0; i < count; ++i) {
    std::u16string name(longest, u'\0');
    if (ZrRegGetSubKeyName(ZRREG_CURRENT_USER, path.c_str(), i, name.data(), longest) != 0)
      names.push_back(name.c_str());
  }
  for (const std::u16string& name : names) {
    std::u16string subKey = key;
    if (!subKey.empty()) subKey += u'\\';
    subKey += name;
    Walk(product, subKey, visit);
  }
}

void List(const Product& product, const std::u16string& from) {
  Walk(product, from, [&](const std::u16string& key, const std::vector<StoredValue>& values) {
    if (values.empty()) return;
    const std::string name = ToUtf8(key);
    const Metric metric(product, key, name);
    for (const StoredValue& value : values) {
      std::printf("%s\t%s\t%s\t%s\n", name.c_str(), value.IdText().c_str(), NameOfType(value.type).c_str(),
                  TextOfValue(ReadValue(metric.Handle(), value)).c_str());
    }
  });
}

void Export(const Product& product) {
  Json keys = Json::object();
  Walk(product, u"", [&](const std::u16string& key, const std::vector<StoredValue>& values) {
    if (values.empty()) return;
    const Metric metric(product, key, ToUtf8(key));
    Json rows = Json::array();
    for (const StoredValue& value : values) {
      rows.push_back(
          Json{{"id", value.IdText()}, {"type", NameOfType(value.type)}, {"value", ReadValue(metric.Handle(), value)}});
    }
    keys[ToUtf8(key)] = rows;
  });
  PrintJson(
      Json{{"product", ToUtf8(product.name)},
           {"version", std::to_string(product.version >> 24) + "." + std::to_string(product.version >> 16 & 0xFF)},
           {"keys", keys}});
}

int RunSettings(const Arguments& arguments) {
  const std::vector<std::string>& words = arguments.Positionals();
  const std::string action = words.empty() ? "" : words[0];
  const Product product(arguments);
  const std::string* typeName = arguments.Value("--type");
  if (action == "list" && words.size() <= 2) {
    List(product, words.size() == 2 ? ToUtf16(words[1]) : u"");
    return kFine;
  }
  if (action == "export" && words.size() == 1) {
    Export(product);
    return kFine;
  }
  const bool isSet = action == "set" && words.size() >= 4;
  if (!isSet && !((action == "get" || action == "delete") && words.size() == 3)) {
    throw UsageError("The command takes \"get\", \"set\", \"delete\", \"list\" or \"export\", and what belongs to it.");
  }
  const uint32_t type = typeName != nullptr ? TypeOfName(*typeName) : ZRREG_DWORD;
  const std::u16string key = ToUtf16(words[1]);
  const int32_t id = IdOf(words[2]);
  const std::string subject = words[1] + " " + words[2];
  if (isSet) {
    const std::vector<std::string> values(words.begin() + 3, words.end());
    if (values.size() > 1 && type != ZRREG_MULTI_SZ) throw UsageError("Only --type multi takes more than one value.");
    const StoredBytes bytes = ParseValue(type, values);
    const Metric metric(product, key, subject);
    Check(WriteValue(metric.Handle(), id, type, bytes), subject);
    return kFine;
  }
  if (!IsThere(product, key, id, type)) throw Failure(ZR_E_NOT_FOUND, subject);
  const Metric metric(product, key, subject);
  if (action == "get") {
    std::printf("%s\n", TextOfValue(ReadValue(metric.Handle(), StoredValue(id, type))).c_str());
  } else {
    Check(ZrDeleteMetric(metric.Handle(), id, type), subject);
  }
  return kFine;
}

}  // namespace

extern const Command kSettingsCommand;
const Command kSettingsCommand = {"settings", "read, write and list stored settings", kHelp, kOptions, RunSettings};

}  // namespace host
