// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace varno_zpk {

/// A situation that makes an operation fail: a message text, whose identity is the constant object.
/// Two statuses are the same when they are the same constant, so there is neither a code nor a
/// comparison. The texts, their spelling included, are fixed.
class CZPKStatus {
public:
    static const CZPKStatus ERROR_UNDEFINED_BEHAVIOR_HAPPEND;
    static const CZPKStatus ERROR_RUNTIME_ERROR;
    static const CZPKStatus ERROR_FAILED_MAKEDIRECTORY;
    static const CZPKStatus ERROR_FAILED_MAKE_INFOCAB;
    static const CZPKStatus ERROR_FAILED_MAKE_DATACAB;
    static const CZPKStatus ERROR_FAILED_MAKE_ARCHIVE;
    static const CZPKStatus ERROR_FAILED_EXTRACT;
    static const CZPKStatus ERROR_FAILED_ENCODE;
    static const CZPKStatus ERROR_FAILED_DECODE;
    static const CZPKStatus ERROR_FAILED_BIND;
    static const CZPKStatus ERROR_FAILED_UNBIND;
    static const CZPKStatus ERROR_FAILED_ENCODED_INFOX;
    static const CZPKStatus ERROR_FAILED_ENCODED_DATAX;
    static const CZPKStatus ERROR_FAILED_DECODED_INFOX;
    static const CZPKStatus ERROR_FAILED_DECODED_DATAX;
    static const CZPKStatus ERROR_FAILED_BIND_INFOX;
    static const CZPKStatus ERROR_FAILED_BIND_DATAX;
    static const CZPKStatus ERROR_FAILED_UNBIND_INFOX;
    static const CZPKStatus ERROR_FAILED_UNBIND_DATAX;
    static const CZPKStatus ERROR_FAILED_LOAD_CONDITION;
    static const CZPKStatus ERROR_FAILED_LOAD_STARTUP;
    static const CZPKStatus ERROR_FAILED_LOAD_LANGUAGES;
    static const CZPKStatus ERROR_LANGUAGESXML_MUSTBEEXIST;
    static const CZPKStatus ERROR_FALLBACKCODE_MUSTBEEXIST;
    static const CZPKStatus ERROR_ZPKSTRINGTABLE_MUSTBEEXIST;

    explicit CZPKStatus(const std::string& message);
    virtual ~CZPKStatus() = default;
    CZPKStatus(const CZPKStatus&) = default;
    CZPKStatus& operator=(const CZPKStatus&) = default;

    /// A copy of the message.
    std::string GetStatus() const;

private:
    std::string m_message;
};

}  // namespace varno_zpk
