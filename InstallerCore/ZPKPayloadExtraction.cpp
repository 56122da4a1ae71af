// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKPayloadExtraction.h"

#include <chrono>
#include <exception>

#include "Base/ZPKClock.h"
#include "Base/ZPKDiagnostic.h"
#include "Package/CZPKUtil.h"
#include "Package/ZPKPackageLayout.h"
#include "UserInterface/ZPKFrontEnd.h"
#include "UserInterface/ZPKProgressWindowController.h"

using varno_zpk::CZPKUtil;

namespace {

/// The full bar stays on the screen for a moment, so that a short installation is seen at all.
constexpr std::chrono::seconds kPauseAtTheEnd{1};

/// Whatever ends the scope, the thread ends with it.
class StopAtEnd {
public:
    explicit StopAtEnd(ZPKPayloadExtraction& extraction) : m_extraction(extraction) {}
    ~StopAtEnd() { m_extraction.stop(); }
    StopAtEnd(const StopAtEnd&) = delete;
    StopAtEnd& operator=(const StopAtEnd&) = delete;

private:
    ZPKPayloadExtraction& m_extraction;
};

}  // namespace

ZPKPayloadExtraction::ZPKPayloadExtraction(ZPKFrontEnd& frontEnd, ZPKClock& clock)
    : m_frontEnd(frontEnd), m_clock(clock) {}

ZPKPayloadExtraction::~ZPKPayloadExtraction() {
    stop();
}

bool ZPKPayloadExtraction::run(const std::string& dataPath, const std::string& stagingFolder,
                               const std::string& title) {
    ZPKProgressWindowController controller(m_frontEnd);
    if (controller.window() == nullptr) {
        return false;
    }
    controller.progressIndicator()->setIndeterminate(false);
    controller.setTitle(title);
    {
        const StopAtEnd stopBeforeTheWindowGoes(*this);
        const WorkOrder workOrder = {
            {kDataFilePathKey, dataPath},
            {kTemporaryFolderPathKey, stagingFolder},
            {kProgressControllerKey, &controller},
        };
        m_worker = std::thread([this, workOrder] { extract(workOrder); });
        m_frontEnd.runModalForWindow(*controller.window());
        if (m_isStopped || !m_isOver) {
            stop();
            controller.close();
            return false;
        }
    }
    m_clock.sleepFor(kPauseAtTheEnd);
    controller.close();
    return true;
}

void ZPKPayloadExtraction::extract(const WorkOrder& workOrder) {
    try {
        unpack(workOrder);
    } catch (const std::exception& error) {
        // The main thread waits in its modal loop: it must be let go whatever happens here.
        ZPKDiagnostic::tell({"unpacking the payload failed: ", error.what()});
    }
    m_isOver = true;
    m_frontEnd.abortModal();
}

void ZPKPayloadExtraction::unpack(const WorkOrder& workOrder) {
    const std::string dataPath = std::get<std::string>(workOrder.at(kDataFilePathKey));
    const std::string stagingFolder = std::get<std::string>(workOrder.at(kTemporaryFolderPathKey));
    const auto given = workOrder.find(kProgressControllerKey);
    ZPKProgressWindowController* const controller =
        given == workOrder.end() ? nullptr : std::get<ZPKProgressWindowController*>(given->second);
    const std::string plainPath =
        ZPKPackageLayout::plainArchive(stagingFolder, ZPKPackageLayout::Content::Data);

    showProgress(controller, 10);
    CZPKUtil::Unfake(dataPath, plainPath);
    showProgress(controller, 40);
    m_outcome = m_tool.unpack(plainPath, stagingFolder);
    showProgress(controller, 100);
    CZPKUtil::DeleteFile(plainPath);
}

void ZPKPayloadExtraction::stop() {
    if (!m_worker.joinable()) {
        return;
    }
    if (!m_isOver) {
        m_isStopped = true;
        m_tool.terminate();
        m_frontEnd.closeToOtherThreads();
    }
    m_worker.join();
}

void ZPKPayloadExtraction::showProgress(ZPKProgressWindowController* controller, double percent) {
    if (controller != nullptr) {
        m_frontEnd.performOnMainThreadAndWait(
            [controller, percent] { controller->setProgressValue(percent); });
    }
}
