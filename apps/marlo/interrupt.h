// SPDX-License-Identifier: Apache-2.0
// Interruption by the user: noticed between blocks, so that half-written files are cleared away.
#pragma once

namespace host {

/// From here on an interrupt or termination request only sets a mark.
void CatchInterrupts();
/// Throws a Failure with ZR_E_CANCELLED when the mark is set.
void ThrowIfInterrupted();

}  // namespace host
