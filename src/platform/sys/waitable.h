// SPDX-License-Identifier: Apache-2.0
// Shared ownership of waitable objects within the library.
#pragma once

#include "marlo110k/platform/event.h"

namespace plat {

/// Adds an owner to an object that the caller knows to be alive; each owner gives its share back with
/// CloseWaitable. A thread that reads a handle under a lock takes a share there, so that it can wait
/// outside the lock while another thread closes the object. Null is allowed. [any thread]
void ShareWaitable(Waitable* object) noexcept;

}  // namespace plat
