// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "UserInterface/ZPKFrontEnd.h"

namespace zpk_test {

/// A delegate whose messages do what the test wants, and that remembers which ones came.
class ScriptedDelegate : public ZPKApplicationDelegate {
public:
    std::function<void()> onAwake;
    std::function<void()> onWillFinish;
    std::function<void()> onDidFinish;
    std::vector<std::string> messages;

    void awakeFromNib() override { receive("awakeFromNib", onAwake); }
    void applicationWillFinishLaunching() override { receive("willFinishLaunching", onWillFinish); }
    void applicationDidFinishLaunching() override { receive("didFinishLaunching", onDidFinish); }

private:
    void receive(const char* name, const std::function<void()>& action) {
        messages.emplace_back(name);
        if (action) {
            action();
        }
    }
};

/// Runs the front end with `action` as the last message's work, then terminates.
inline int runWith(ZPKFrontEnd& frontEnd, const std::function<void()>& action) {
    ScriptedDelegate delegate;
    delegate.onDidFinish = [&] {
        action();
        frontEnd.terminate();
    };
    return frontEnd.run(delegate);
}

}  // namespace zpk_test
