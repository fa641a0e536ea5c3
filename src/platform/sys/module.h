// SPDX-License-Identifier: Apache-2.0
// Loadable modules and the process image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace plat {

/// A loaded module. The process image and the library itself have handles too.
struct Module;

/// Loads by path (backslashes allowed, name found without regard to case). Null with LastError() 126.
Module* LoadModule(const char16_t* path) noexcept;
/// Opens a module file, or a bare file of compiled resources, for its resources alone: nothing of it runs, so that a
/// damaged or hostile one can't do harm. It has a path and no symbols. Null with LastError() 126 without resources.
Module* LoadDataModule(const char16_t* path) noexcept;
/// Ends one load of either kind.
void UnloadModule(Module* module) noexcept;
/// An exported function or datum; null when missing.
void* ModuleSymbol(Module* module, const char* name) noexcept;

Module* ProcessImage() noexcept;
/// The module that contains `address`, null when none does. The handle doesn't keep the module loaded.
Module* ModuleOfAddress(const void* address) noexcept;
/// This library (or the test program it is linked into).
Module* ThisModule() noexcept;

/// Full path; empty with LastError() 126 for a bad handle.
std::u16string ModulePath(Module* module);
/// Where the module is mapped.
const void* ModuleBase(Module* module) noexcept;
/// 32 or 64 from the file's header, 0 when it is no module. The file isn't loaded.
uint32_t ModuleBits(const char16_t* path) noexcept;

}  // namespace plat
