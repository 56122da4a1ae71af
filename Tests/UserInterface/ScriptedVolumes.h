// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "UserInterface/ZPKRemovableVolumes.h"

namespace zpk_test {

/// Folders that stand for mounted volumes.
class ScriptedVolumes : public ZPKRemovableVolumes {
public:
    /// Path and whether it is an optical disc, in mount order.
    std::vector<std::pair<std::string, bool>> volumes;

    /// Called when the list is asked for, and when a volume is looked at, on the thread that asks.
    std::function<void()> onAsked;
    std::function<void(const std::string& path)> onLooked;

    std::vector<std::string> mountedRemovableMedia() const override {
        if (onAsked) {
            onAsked();
        }
        std::vector<std::string> paths;
        for (const auto& [path, isDisc] : volumes) {
            paths.push_back(path);
        }
        return paths;
    }

    bool isCDMediaAtPath(const std::string& path) const override {
        if (onLooked) {
            onLooked(path);
        }
        for (const auto& [volume, isDisc] : volumes) {
            if (volume == path) {
                return isDisc;
            }
        }
        return false;
    }
};

}  // namespace zpk_test
