// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

class ZPKClock;
class ZPKFrontEnd;
class ZPKRemovableVolumes;

/// The launch sequence on one front end, from its first message to the process's exit status. Main
/// thread only.
class ZPKApplicationRun {
public:
    ZPKApplicationRun() = delete;

    /// Gives the exit status: that of the run itself, or else the front end's. SIGTERM, SIGINT and SIGHUP end
    /// the run early, except while the setup program runs; then the status is 128 plus the number. An
    /// exception of the sequence is a line on standard error and status 1. Whichever way it ends, nothing
    /// that it unpacked or started is left; also where the toolkit ends the process, provided that the front
    /// end was made before.
    static int run(ZPKFrontEnd& frontEnd, const ZPKRemovableVolumes& volumes, ZPKClock& clock);
};
