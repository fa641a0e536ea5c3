// SPDX-License-Identifier: Apache-2.0
// The international record of the process.
#pragma once

#include "marlo110k/locale.h"

namespace marlo {

/// Written at start and by a re-read that the host asks for; read by everything that formats. No lock guards it.
extern constinit tZRINTERNATIONALS internationals;

/// Reads the user's locale into the record and sets the tokens that depend on it.
/// @return false when a token could not be stored.
bool LoadInternationals() noexcept;

}  // namespace marlo
