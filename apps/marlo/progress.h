// SPDX-License-Identifier: Apache-2.0
// A progress bar on a terminal for work that takes longer than a moment; nothing elsewhere.
#pragma once

#include <cstdint>

namespace host {

class Progress {
 public:
  /// @param whole the amount of work in any unit.
  explicit Progress(int64_t whole);
  /// Takes the bar away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Tells how much is done; also the place where an interrupted run notices: throws a Failure with
  /// ZR_E_CANCELLED then.
  void Update(int64_t done);

 private:
  int64_t whole_;
  int64_t startMilliseconds_;
  int64_t shownMilliseconds_ = 0;
  bool terminal_;
  bool shown_ = false;
};

}  // namespace host
