// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <map>
#include <string>
#include <thread>
#include <variant>

#include "Base/ZPKFailure.h"
#include "Package/ZPKArchiveTool.h"

class ZPKClock;
class ZPKFrontEnd;
class ZPKProgressWindowController;

/// Unpacks the payload on a thread of its own, while the main thread runs the progress window. The thread
/// never outlives this object nor the window: who ends the run early ends the archive tool and waits for
/// the thread. Main thread only, except `extract`.
class ZPKPayloadExtraction {
public:
    /// What the thread is given: "DataFilePath", the scrambled archive, and "TemporaryFolderPath", the
    /// staging folder, both full paths, and "ProgressController", which may be absent.
    using WorkOrder = std::map<std::string, std::variant<std::string, ZPKProgressWindowController*>>;

    static constexpr const char* kDataFilePathKey = "DataFilePath";
    static constexpr const char* kTemporaryFolderPathKey = "TemporaryFolderPath";
    static constexpr const char* kProgressControllerKey = "ProgressController";

    /// `frontEnd` and `clock` outlive the extraction.
    ZPKPayloadExtraction(ZPKFrontEnd& frontEnd, ZPKClock& clock);
    ~ZPKPayloadExtraction();
    ZPKPayloadExtraction(const ZPKPayloadExtraction&) = delete;
    ZPKPayloadExtraction& operator=(const ZPKPayloadExtraction&) = delete;

    /// Shows the progress window with `title` and unpacks the archive into the staging folder. False when
    /// there was no window to show, or when the modal loop ended before all was unpacked: then no program
    /// may be run. The thread has ended when this returns. Called once.
    bool run(const std::string& dataPath, const std::string& stagingFolder, const std::string& title);

    /// The thread's work: unscrambles and unpacks the payload, reports 10, 40 and 100 percent and ends the
    /// modal loop. Everything it is given outlives it. One thread at a time.
    void extract(const WorkOrder& workOrder);

    /// Ends the thread, if one runs: the archive tool at once, and then nothing is shown any more. Also
    /// while the process exits.
    void stop();

    /// Ends the archive tool, or lets it not begin. Any thread.
    void terminateTool() { m_tool.terminate(); }

    /// How the archive tool ended. Meaningful when no thread runs.
    const ZPKOutcome& outcome() const { return m_outcome; }

private:
    void unpack(const WorkOrder& workOrder);
    void showProgress(ZPKProgressWindowController* controller, double percent);

    ZPKFrontEnd& m_frontEnd;
    ZPKClock& m_clock;
    ZPKArchiveTool m_tool;
    ZPKOutcome m_outcome;
    std::thread m_worker;

    /// The main thread's: not all was unpacked.
    bool m_isStopped = false;

    /// Set by the thread before it ends the modal loop.
    std::atomic<bool> m_isOver{false};
};
