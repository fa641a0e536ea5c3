// SPDX-License-Identifier: Apache-2.0
// Reads profile files: UTF-16 or UTF-8 by their mark, else UTF-8 when it is valid, else the ANSI code page.
#include "platform/sys/profile.h"

#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "marlo110k/platform/file.h"
#include "platform/base/codepage.h"
#include "platform/base/text.h"

namespace plat {
namespace {

constexpr uint64_t kMaximumFileBytes = 16u << 20;

std::string ReadWhole(const char16_t* path) {
  std::string content;
  File* file = OpenFile(path, kReadAccess, kShareRead | kShareWrite | kShareDelete, kOpenExisting);
  if (file == kInvalidFile) return content;
  uint64_t bytes = 0;
  uint32_t got = 0;
  if (GetFileBytes(file, &bytes)) {
    content.resize(std::min(bytes, kMaximumFileBytes));
    if (!ReadFile(file, content.data(), static_cast<uint32_t>(content.size()), &got)) got = 0;
  }
  CloseFile(file);
  content.resize(got);
  return content;
}

std::u16string Decode(const std::string& content) {
  if (content.size() >= 2 && content.compare(0, 2, "\xFF\xFE") == 0) {
    std::u16string text(content.size() / 2 - 1, u'\0');
    std::memcpy(text.data(), content.data() + 2, text.size() * 2);
    return text;
  }
  const size_t markBytes = content.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  std::u16string text = FromUtf8(content.c_str() + markBytes);
  if (markBytes == 0 && text.find(u'\xFFFD') != std::u16string::npos) {
    text.resize(content.size());
    text.resize(FromAnsi(content.data(), content.size(), text.data(), text.size()));
  }
  return text;
}

std::u16string_view Trimmed(std::u16string_view text) {
  while (!text.empty() && text.front() <= u' ') text.remove_prefix(1);
  while (!text.empty() && text.back() <= u' ') text.remove_suffix(1);
  return text;
}

bool SameName(std::u16string_view left, const char16_t* right) {
  return right != nullptr && CompareTextNoCase(std::u16string(left).c_str(), right) == 0;
}

/// Finds the key's text. @return false when file, section or key is missing.
bool Find(const char16_t* path, const char16_t* section, const char16_t* key, std::u16string* value) {
  const std::u16string text = Decode(ReadWhole(path));
  bool inSection = false;
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find_first_of(u"\r\n", begin), text.size());
    const std::u16string_view line = Trimmed(std::u16string_view(text).substr(begin, end - begin));
    begin = end + 1;
    if (line.empty() || line.front() == u';') continue;
    if (line.front() == u'[') {
      // The first section of that name decides.
      if (inSection) return false;
      inSection = SameName(Trimmed(line.substr(1, std::min(line.find(u']'), line.size()) - 1)), section);
      continue;
    }
    const size_t equals = line.find(u'=');
    if (!inSection || equals == std::u16string_view::npos) continue;
    if (!SameName(Trimmed(line.substr(0, equals)), key)) continue;
    std::u16string_view found = Trimmed(line.substr(equals + 1));
    const bool quoted =
        found.size() >= 2 && found.front() == found.back() && (found.front() == u'"' || found.front() == u'\'');
    if (quoted) found = found.substr(1, found.size() - 2);
    *value = found;
    return true;
  }
  return false;
}

std::u16string ProfileFolder() {
  if (const char* folder = getenv("MARLO_PROFILE_DIR")) return FromUtf8(folder);
  const char* configuration = getenv("XDG_CONFIG_HOME");
  if (configuration != nullptr && configuration[0] == '/') return FromUtf8(configuration) + u"/marlo110k";
  const char* home = getenv("HOME");
  return (home != nullptr ? FromUtf8(home) : std::u16string()) + u"/.config/marlo110k";
}

}  // namespace

std::u16string UserProfilePath() noexcept {
  try {
    return ProfileFolder() + u"/win.ini";
  } catch (const std::bad_alloc&) {
    return {};
  }
}

int32_t ProfileInt(const char16_t* path, const char16_t* section, const char16_t* key, int32_t defaultValue) noexcept {
  try {
    std::u16string value;
    if (!Find(path, section, key, &value) || value.empty()) return defaultValue;
    const bool negative = value.front() == u'-';
    uint32_t number = 0;
    for (size_t i = negative || value.front() == u'+' ? 1 : 0; i < value.size(); ++i) {
      if (value[i] < u'0' || value[i] > u'9') break;
      number = number * 10 + (value[i] - u'0');  // Wraps like the platform's own reader.
    }
    return static_cast<int32_t>(negative ? 0 - number : number);
  } catch (const std::bad_alloc&) {
    return defaultValue;
  }
}

size_t ProfileText(const char16_t* path, const char16_t* section, const char16_t* key, const char16_t* defaultText,
                   char16_t* buffer, size_t characters) noexcept {
  try {
    std::u16string value;
    if (Find(path, section, key, &value)) return CopyText(buffer, characters, value.c_str());
  } catch (const std::bad_alloc&) {
  }
  return CopyText(buffer, characters, defaultText);
}

}  // namespace plat
