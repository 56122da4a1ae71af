// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Base/ZPKFailure.h"
#include "Tools/run/RunFolder.h"

namespace zpk_run {

/// Starts a process that removes `folder` once the calling process is gone, however it ends: by itself,
/// by a signal, or killed. The caller may become another program meanwhile. The watcher holds the
/// folder's lock, none of the caller's streams, and no terminal reaches it.
/// Called while the process has one thread.
ZPKOutcome startFolderWatcher(const RunFolder& folder);

}  // namespace zpk_run
