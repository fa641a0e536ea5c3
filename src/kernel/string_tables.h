// SPDX-License-Identifier: Apache-2.0
// String tables of modules: blocks of sixteen counted strings, read from the compiled resources of the module's file.
#pragma once

#include <cstdint>

namespace plat {
struct Module;
}

namespace marlo {

/// Copies a string in the published way: at most `size` characters, terminated while there is room for one more.
/// @param lcid the language it must have; 0 takes the calling thread's, else a neutral one, English or the first.
/// @return the smaller of the string's length and `size`; 0 when there is no such string or an empty one.
int32_t LoadTableString(plat::Module* module, uint32_t id, uint32_t lcid, char16_t* buffer, int32_t size) noexcept;

/// A string that carries a terminator of its own, for as long as the library is loaded; null when there is none.
const char16_t* AdoptTableString(plat::Module* module, uint32_t id, uint32_t lcid) noexcept;

}  // namespace marlo
