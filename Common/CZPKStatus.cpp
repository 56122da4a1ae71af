// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CZPKStatus.h"

namespace varno_zpk {

const CZPKStatus CZPKStatus::ERROR_UNDEFINED_BEHAVIOR_HAPPEND("Undefined Error occurs.");
const CZPKStatus CZPKStatus::ERROR_RUNTIME_ERROR("RunTime Error oocer.");
const CZPKStatus CZPKStatus::ERROR_FAILED_MAKEDIRECTORY("Faild make directory");
const CZPKStatus CZPKStatus::ERROR_FAILED_MAKE_INFOCAB("Failed make infocab");
const CZPKStatus CZPKStatus::ERROR_FAILED_MAKE_DATACAB("Failed make datacab");
const CZPKStatus CZPKStatus::ERROR_FAILED_MAKE_ARCHIVE("Failed make archive");
const CZPKStatus CZPKStatus::ERROR_FAILED_EXTRACT("Failed extract archive");
const CZPKStatus CZPKStatus::ERROR_FAILED_ENCODE("Failed encode");
const CZPKStatus CZPKStatus::ERROR_FAILED_DECODE("Failed decode");
const CZPKStatus CZPKStatus::ERROR_FAILED_BIND("Failed bind");
const CZPKStatus CZPKStatus::ERROR_FAILED_UNBIND("Failed unbind");
const CZPKStatus CZPKStatus::ERROR_FAILED_ENCODED_INFOX("Failed encoded infox");
const CZPKStatus CZPKStatus::ERROR_FAILED_ENCODED_DATAX("Failed encoded datax");
const CZPKStatus CZPKStatus::ERROR_FAILED_DECODED_INFOX("Failed decoded infox");
const CZPKStatus CZPKStatus::ERROR_FAILED_DECODED_DATAX("Failed decoded datax");
const CZPKStatus CZPKStatus::ERROR_FAILED_BIND_INFOX("Failed bind infox");
const CZPKStatus CZPKStatus::ERROR_FAILED_BIND_DATAX("Failed bind datax");
const CZPKStatus CZPKStatus::ERROR_FAILED_UNBIND_INFOX("Failed unbind infox");
const CZPKStatus CZPKStatus::ERROR_FAILED_UNBIND_DATAX("Failed unbind datax");
const CZPKStatus CZPKStatus::ERROR_FAILED_LOAD_CONDITION("Failed load Condition.xml");
const CZPKStatus CZPKStatus::ERROR_FAILED_LOAD_STARTUP("Failed load Startup.xml");
const CZPKStatus CZPKStatus::ERROR_FAILED_LOAD_LANGUAGES("Failed load Languages.xml");
const CZPKStatus CZPKStatus::ERROR_LANGUAGESXML_MUSTBEEXIST("Languages.xml not found");
const CZPKStatus CZPKStatus::ERROR_FALLBACKCODE_MUSTBEEXIST("FallBackCode not found");
const CZPKStatus CZPKStatus::ERROR_ZPKSTRINGTABLE_MUSTBEEXIST("ZPKStringTable not found");

CZPKStatus::CZPKStatus(const std::string& message) : m_message(message) {}

std::string CZPKStatus::GetStatus() const {
    return m_message;
}

}  // namespace varno_zpk
