// SPDX-License-Identifier: Apache-2.0
// The words of a command line, taken apart strictly: nothing unknown, doubled or empty passes.
#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

namespace host {

struct Option {
  const char* name;  ///< With its dashes.
  bool takesValue;
};

/// The words behind a subcommand's name. Throws UsageError on a word it can't place.
class Arguments {
 public:
  /// Options may stand anywhere, as "--name value" or "--name=value"; the word behind an option that
  /// takes a value is that value whatever it looks like. "--" ends the options.
  Arguments(std::span<const std::string> words, std::span<const Option> options);

  const std::vector<std::string>& Positionals() const { return positionals_; }
  bool Has(const char* name) const { return Value(name) != nullptr; }
  /// The value of an option, an empty text for a given option without one, null for one not given.
  const std::string* Value(const char* name) const;

  /// True when "--help" or "-h" stands among the words before "--".
  static bool AskForHelp(std::span<const std::string> words);

 private:
  std::vector<std::string> positionals_;
  std::vector<std::pair<std::string, std::string>> values_;
};

}  // namespace host
