// SPDX-License-Identifier: Apache-2.0
// Draws the progress bar, at most ten times a second and not in the first second.
#include "progress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "interrupt.h"
#include "terminal.h"

namespace host {
namespace {

int64_t Milliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace

Progress::Progress(int64_t whole)
    : whole_(whole), startMilliseconds_(Milliseconds()), terminal_(ErrorsGoToTerminal()) {}

Progress::~Progress() {
  if (shown_) std::fprintf(stderr, "\r\033[K");
}

void Progress::Update(int64_t done) {
  ThrowIfInterrupted();
  if (!terminal_ || whole_ <= 0) return;
  const int64_t now = Milliseconds();
  if (now - startMilliseconds_ < 1000 || now - shownMilliseconds_ < 100) return;
  shownMilliseconds_ = now;
  shown_ = true;
  const double share = std::clamp(static_cast<double>(done) / static_cast<double>(whole_), 0.0, 1.0);
  const size_t width = std::min<size_t>(TerminalColumns() - 10, 60);
  const auto filled = static_cast<size_t>(share * static_cast<double>(width));
  const std::string bar = std::string(filled, '#') + std::string(width - filled, ' ');
  std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), static_cast<int>(share * 100));
}

}  // namespace host
