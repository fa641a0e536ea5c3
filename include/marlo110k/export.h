// SPDX-License-Identifier: Apache-2.0
// Marks what the shared library exports; everything without the mark stays inside it.
#pragma once

#define ZR_API __attribute__((visibility("default")))
