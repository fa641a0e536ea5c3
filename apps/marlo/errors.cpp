// SPDX-License-Identifier: Apache-2.0
// The sentences of result codes, and the failures that the platform's error numbers stand for.
#include "errors.h"

#include <cstdio>

#include "marlo110k/platform/file.h"

namespace host {
namespace {

struct Sentence {
  HRESULT code;
  const char* text;
};

constexpr Sentence kSentences[] = {
    {E_NOTIMPL, "The library has no conversion for these sample types."},
    {E_FAIL, "The operation failed."},
    {E_OUTOFMEMORY, "There isn't enough memory."},
    {E_INVALIDARG, "The library refused an argument."},
    {ZR_E_UNSUPPORTED_MEDIA, "The audio format isn't supported."},
    {ZR_E_DISK_FULL, "The disk is full."},
    {ZR_E_FILE_OPEN, "The file can't be opened."},
    {ZR_E_FILE_READ, "The file can't be read, or ends too early."},
    {ZR_E_FILE_WRITE, "The file can't be written."},
    {ZR_E_NOT_FOUND, "A part of the file that is needed wasn't found."},
    {ZR_E_UNKNOWN_FORMAT, "The file is no Wave, Wave64 or AIFF file."},
    {ZR_E_CANCELLED, "Interrupted."},
    {ZR_E_UNSUPPORTED_FILE, "The file holds no uncompressed samples of a known type."},
    {ZR_E_FILE_EXISTS, "The file exists already."},
    {ZR_E_FILE_TOO_LARGE, "The output is too large for its file format."},
    {ZR_E_SHARING, "Another program uses the file."},
    {ZR_E_NO_RIFF_HEADER, "The file doesn't begin as a sound file does."},
    {ZR_E_EMPTY_CHUNK, "A chunk of the file is empty where it must not be."},
    {ZR_E_BAD_STREAM, "The front of the file has a size that can't be right."},
};

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
  for (const Sentence& sentence : kSentences) {
    if (sentence.code == code) return sentence.text;
  }
  return "The library reported an error.";
}

std::string CodeText(HRESULT code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<uint32_t>(code));
  return text;
}

Failure::Failure(HRESULT code, std::string subject, std::string sentence) : code_(code) {
  if (!subject.empty()) text_ = subject + ": ";
  text_ += (sentence.empty() ? SentenceOf(code) : sentence) + " (" + CodeText(code) + ")";
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
