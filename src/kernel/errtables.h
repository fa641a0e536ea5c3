// SPDX-License-Identifier: Apache-2.0
// The built-in tables of error texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kernel/strings.h"
#include "marlo110k/errors.h"

namespace marlo {

/// The rows of the library's own codes; the first row of a code counts.
std::span<const _zrerror_table> ErrorTable() noexcept;

/// The text of an operation; an unknown number gets that of operation 0.
Text ContextText(uint32_t context) noexcept;

}  // namespace marlo
