// SPDX-License-Identifier: Apache-2.0
// The library's own texts of result codes, and the failures that the platform's error numbers stand for.
#include "errors.h"

#include <algorithm>
#include <cstdio>

#include "marlo110k/errors.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/printf.h"
#include "unicode.h"

namespace host {
namespace {

struct Reason {
  uint32_t number;
  const char* text;
};

// The platform's error numbers that an open is likely to end with.
constexpr Reason kOpenReasons[] = {
    {2, "The file doesn't exist."},       {3, "The folder doesn't exist."},       {4, "Too many files are open."},
    {5, "Access to the file is denied."}, {32, "Another program uses the file."}, {80, "The file exists already."},
    {112, "The disk is full."},           {183, "The file exists already."},
};

}  // namespace

std::string SentenceOf(HRESULT code) {
  const char16_t* format = ZrErrorHandler_GetHresultString(code);
  if (format == nullptr) return "The library reported an error.";
  // The text is a format: it may name the program, and one names the file's type, which isn't known here.
  char16_t text[1024];
  ZrCchPrintF(text, std::size(text), nullptr, format, u"The");
  std::string sentence = ToUtf8(text);
  // Line feeds set it apart in a box; here it is one line among others.
  sentence.erase(0, sentence.find_first_not_of('\n'));
  std::replace(sentence.begin(), sentence.end(), '\n', ' ');
  return sentence;
}

std::string CodeText(HRESULT code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<uint32_t>(code));
  return text;
}

Failure::Failure(HRESULT code, const std::string& subject, const std::string& sentence) : code_(code) {
  if (!subject.empty()) text_ = subject + ": ";
  text_ += SentenceOf(code);
  if (!sentence.empty()) text_ += " " + sentence;
  text_ += " (" + CodeText(code) + ")";
}

Failure OpenFailure(const std::string& path) {
  const uint32_t number = plat::LastError();
  for (const Reason& reason : kOpenReasons) {
    if (reason.number == number) return Failure(ZR_E_FILE_OPEN, path, reason.text);
  }
  return Failure(ZR_E_FILE_OPEN, path);
}

Failure WriteFailure(const std::string& path) {
  constexpr uint32_t kDiskFull = 112;
  return Failure(plat::LastError() == kDiskFull ? ZR_E_DISK_FULL : ZR_E_FILE_WRITE, path);
}

}  // namespace host
