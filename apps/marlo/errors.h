// SPDX-License-Identifier: Apache-2.0
// How the program fails: a wrong command line, or a result code about a file with its text.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "marlo110k/contract/hresult.h"

namespace host {

/// The command line is wrong; the text says why. Ends the program with 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Something failed with a code. Ends the program with 1.
class Failure : public std::exception {
 public:
  /// @param subject the file it is about, or empty. @param sentence says more than the code's own text, behind it.
  Failure(HRESULT code, const std::string& subject, const std::string& sentence = {});
  HRESULT Code() const noexcept { return code_; }
  /// "subject: sentence (0x8004E007)".
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  HRESULT code_;
  std::string text_;
};

/// Throws a Failure when `code` is a failure.
inline void Check(HRESULT code, const std::string& subject) {
  if (FAILED(code)) throw Failure(code, subject);
}

/// What a failed open of `path` for reading or writing means, told from the platform's last error.
Failure OpenFailure(const std::string& path);
/// What a failed write to `path` means: a full disk has its own code.
Failure WriteFailure(const std::string& path);

/// The library's text of a code on one line; a code without one gets a general sentence.
std::string SentenceOf(HRESULT code);
/// "0x8004E007".
std::string CodeText(HRESULT code);

}  // namespace host
