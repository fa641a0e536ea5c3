// SPDX-License-Identifier: Apache-2.0
// What a subcommand is: its name, its help, the options it takes and the function that does it.
#pragma once

#include <span>

#include "arguments.h"

namespace host {

/// Exit codes of the program.
enum ExitCode : int { kFine = 0, kFailed = 1, kWrongUsage = 2 };

struct Command {
  const char* name;
  const char* summary;  ///< One line for the list of commands.
  const char* help;     ///< The whole help text, with an example.
  std::span<const Option> options;
  int (*run)(const Arguments& arguments);
};

}  // namespace host
