// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CAutoFinalizeObject.h"
#include "Common/IVariableValueFinder.h"

namespace varno_zpk {

/// Replaces references of the form $Name$ in UTF-8 texts by the values that a finder supplies.
/// "$$" is a reference with an empty name: a literal "$" cannot be escaped. References do not nest,
/// an unpaired "$" is plain text, and a value is never scanned again.
///
/// A process-wide singleton; main thread only.
class CVariableManager : public CAutoFinalizeObject {
public:
    /// For `GetManager` only: asserts that there is no manager yet.
    CVariableManager();
    /// Asserts that this is the manager that `GetManager` gives.
    ~CVariableManager() override;

    /// The single manager, made on the first call.
    static CVariableManager* GetManager();

    /// The expanded text: `str` itself, with `out` untouched, when it holds no pair of "$", else
    /// the text of `out`. Without a finder the references stay as they are. A finder that does not
    /// know a variable stops the program. `str` may lie in `out`.
    const char* ExpandVariablesInString(const char* str, std::string& out, IVariableValueFinder* finder);

    /// The same with the default finder, but always fills `out` and returns its text.
    const char* Expand(const char* str, std::string& out);

    /// The expanded text by the default finder: `str` itself, or a text of this manager's that is
    /// valid until the next call.
    const char* ExpandAndReturnTempString(const char* str);

    /// The same by `finder`, which may be null.
    const char* ExpandAndReturnTempString(const char* str, IVariableValueFinder* finder);

    /// The value of the reference `name` (delimiters included), or the text of `name` when there is
    /// no finder. Tells on standard error what was found; a variable that the finder does not know
    /// is a programming error, which stops the program. `value` is the finder's scratch string.
    const char* FindValueForVariable(const std::string& name, std::string& value,
                                     IVariableValueFinder* finder);

private:
    static CVariableManager* s_Manager;

    std::string m_tempString;
};

}  // namespace varno_zpk
