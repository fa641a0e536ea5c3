// SPDX-License-Identifier: Apache-2.0
// Command line words: options apart from positional words.
#include "arguments.h"

#include <algorithm>

#include "errors.h"

namespace host {

Arguments::Arguments(std::span<const std::string> words, std::span<const Option> options) {
  for (size_t index = 0; index < words.size(); ++index) {
    const std::string& word = words[index];
    if (word == "--") {
      positionals_.insert(positionals_.end(), words.begin() + static_cast<ptrdiff_t>(index) + 1, words.end());
      break;
    }
    if (word.empty()) throw UsageError("An argument is empty.");
    if (word[0] != '-' || word == "-") {
      positionals_.push_back(word);
      continue;
    }
    const size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const auto option =
        std::find_if(options.begin(), options.end(), [&](const Option& candidate) { return name == candidate.name; });
    if (option == options.end()) throw UsageError("There is no option " + name + ".");
    if (Has(option->name)) throw UsageError("The option " + name + " stands there twice.");
    std::string value;
    if (option->takesValue) {
      if (equals != std::string::npos) {
        value = word.substr(equals + 1);
      } else if (index + 1 < words.size()) {
        value = words[++index];
      } else {
        throw UsageError("The option " + name + " needs a value.");
      }
      if (value.empty()) throw UsageError("The value of " + name + " is empty.");
    } else if (equals != std::string::npos) {
      throw UsageError("The option " + name + " takes no value.");
    }
    values_.emplace_back(name, value);
  }
}

const std::string* Arguments::Value(const char* name) const {
  for (const auto& [given, value] : values_) {
    if (given == name) return &value;
  }
  return nullptr;
}

bool Arguments::AskForHelp(std::span<const std::string> words) {
  for (const std::string& word : words) {
    if (word == "--") return false;
    if (word == "--help" || word == "-h") return true;
  }
  return false;
}

}  // namespace host
