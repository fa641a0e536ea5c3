// SPDX-License-Identifier: Apache-2.0
// The JSON that scripts read: keys keep the order in which docs/formats/json-output.md names them.
#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace host {

using Json = nlohmann::ordered_json;

/// Prints a document and a line end. Bytes that aren't UTF-8 (chunk names of hostile files) are replaced.
inline void PrintJson(const Json& document) {
  const std::string text = document.dump(2, ' ', false, Json::error_handler_t::replace);
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fputc('\n', stdout);
}

}  // namespace host
