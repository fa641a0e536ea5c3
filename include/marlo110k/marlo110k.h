// SPDX-License-Identifier: Apache-2.0
// The whole public interface.
#pragma once

#include "marlo110k/channels.h"
#include "marlo110k/contract/filetime.h"
#include "marlo110k/contract/guid.h"
#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/picture.h"
#include "marlo110k/contract/stream.h"
#include "marlo110k/contract/unknown.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/cpu.h"
#include "marlo110k/levels.h"
#include "marlo110k/list.h"
#include "marlo110k/platform/event.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/platform/lock.h"
#include "marlo110k/queue.h"
#include "marlo110k/samples.h"
#include "marlo110k/waveformat.h"
