// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/WholeOutput.h"

#include "Base/ZPKPath.h"
#include "Tools/zpkpack/ChildStep.h"
#include "Tools/zpkpack/SignalHold.h"
#include "Tools/zpkpack/WorkFolder.h"

namespace zpk_packager {

void WholeOutput::make(const OutputPlace& output, const Maker& maker, Progress* progress) {
    output.checkFree();
    const SignalHold signals;
    const WorkFolder workFolder = WorkFolder::beside(output.path());
    const std::string made = ZPKPath::join(workFolder.path(), "made");
    {
        // A signal that waits ends the process when it is let in: by then the bar is gone.
        const Progress::Scope shown(progress);
        ChildStep::run(signals, [&] { maker(workFolder.path(), made); });
    }
    output.put(made);
}

}  // namespace zpk_packager
