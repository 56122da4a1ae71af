#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <queue>
#include <string>

#include "UserInterface/ZPKFrontEnd.h"

/// The front end on a terminal: progress as a line, an alert as text, the disc search as a question.
/// Writes on standard output and asks on standard input; with no terminal to ask on, a question
/// counts as Cancel.
class ZPKTerminalFrontEnd : public ZPKFrontEnd {
public:
    ZPKTerminalFrontEnd();
    ~ZPKTerminalFrontEnd() override;
};
