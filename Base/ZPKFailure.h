// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cassert>
#include <optional>
#include <string>
#include <utility>

/// Why an operation on a file failed: which file, and what the system or the operation says of it.
class ZPKFailure {
public:
    ZPKFailure(std::string path, std::string reason) : m_path(std::move(path)), m_reason(std::move(reason)) {}

    /// The reason is the system's own text for `error`, an errno value.
    static ZPKFailure ofSystem(std::string path, int error);

    const std::string& path() const { return m_path; }

    /// A phrase in English.
    const std::string& reason() const { return m_reason; }

    /// `PATH: reason`, safe to show on a terminal.
    std::string message() const;

    /// The system's text for an errno value, in English whatever the locale; may be called from any
    /// thread.
    static std::string systemReason(int error);

private:
    std::string m_path;
    std::string m_reason;
};

/// How an operation without a value ended: success, or the failure and its cause. Asking it is the
/// caller's duty; one whose contract is silence says so with `ignore`.
class [[nodiscard]] ZPKOutcome {
public:
    ZPKOutcome() = default;
    ZPKOutcome(ZPKFailure failure) : m_failure(std::move(failure)) {}

    explicit operator bool() const { return !m_failure; }

    /// Only after a failure.
    const ZPKFailure& failure() const {
        assert(m_failure);
        return *m_failure;
    }

    /// Here nobody is to be told.
    void ignore() const {}

private:
    std::optional<ZPKFailure> m_failure;
};

/// The same for an operation that gives a value.
template <typename Value>
class [[nodiscard]] ZPKResult {
public:
    ZPKResult(Value value) : m_value(std::move(value)) {}
    ZPKResult(ZPKFailure failure) : m_failure(std::move(failure)) {}

    explicit operator bool() const { return m_value.has_value(); }

    /// Only after success.
    Value& operator*() {
        assert(m_value);
        return *m_value;
    }
    const Value& operator*() const {
        assert(m_value);
        return *m_value;
    }
    Value* operator->() { return &**this; }
    const Value* operator->() const { return &**this; }

    /// Only after a failure.
    const ZPKFailure& failure() const {
        assert(m_failure);
        return *m_failure;
    }

    /// The value, or nothing: for a caller whose contract is silence about the cause.
    std::optional<Value> valueOrNothing() && { return std::move(m_value); }

private:
    std::optional<Value> m_value;
    std::optional<ZPKFailure> m_failure;
};
