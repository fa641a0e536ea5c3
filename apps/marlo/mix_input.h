// SPDX-License-Identifier: Apache-2.0
// One input of a mix as it is written: a file name with an optional start time and gain behind it.
#pragma once

#include <string>

namespace host {

struct MixInput {
  std::string path;
  double startSeconds = 0;
  double gain = 1;  ///< A factor.
};

/// Takes "IN[@seconds][:gain]" apart from the right. What doesn't parse as a suffix belongs to the
/// name, so "take:A.wav" and "me@home.wav" are names; a name that ends like a suffix is protected by
/// writing the suffix out ("part:2:1").
MixInput ParseMixInput(const std::string& text);

}  // namespace host
