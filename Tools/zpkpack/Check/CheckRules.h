// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <span>
#include <string>
#include <string_view>

namespace zpk_packager {

/// An error keeps a package from being built.
enum class CheckSeverity { Warning, Error };

/// What one check is called and what it is for.
struct CheckRule {
    const char* name;
    CheckSeverity severity;
    /// A line each, whole sentences.
    const char* reason;
    const char* remedy;

    const char* severityName() const { return severity == CheckSeverity::Error ? "error" : "warning"; }
};

/// Every check that there is. Immutable; may be used from any thread.
class CheckRules {
public:
    CheckRules() = delete;

    /// In the order of the document, group by group.
    static std::span<const CheckRule> all();

    /// Null when there is none of this name.
    static const CheckRule* find(std::string_view name);

    /// The name that was meant by one that is none; empty when none is near.
    static std::string nearestName(std::string_view name);

    /// The page of all checks, `Docs/Checks.md`.
    static std::string document();
};

}  // namespace zpk_packager
