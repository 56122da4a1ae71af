// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKToolkitMessages.h"

#include <unistd.h>

#include <QLoggingCategory>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

enum class Phase { Starting, WithoutDesktop, Running };

struct State {
    std::mutex mutex;
    Phase phase = Phase::Running;
    bool isHolding = false;
    QString last;
    int (*runWithoutDesktop)() = nullptr;
};

State& TheState() {
    static State state;
    return state;
}

void PrintLine(const QString& text) {
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

[[noreturn]] void LeaveToolkit(const QString& reason, int (*run)()) {
    PrintLine(QStringLiteral("Cannot use the desktop: ") + reason.section(QLatin1Char('\n'), 0, 0));
    const int status = run == nullptr ? 1 : run();
    std::fflush(nullptr);
    _exit(status);
}

void HandleFatal(const QString& text) {
    State& state = TheState();
    std::unique_lock lock(state.mutex);
    if (state.phase == Phase::Starting) {
        state.phase = Phase::WithoutDesktop;
        // What came before says what is wrong; the fatal message only that there is no way on.
        const QString reason = state.last.isEmpty() ? text : state.last;
        lock.unlock();
        LeaveToolkit(reason, state.runWithoutDesktop);
    }
    lock.unlock();
    PrintLine(text);
    std::exit(1);
}

void HandleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtFatalMsg) {
        HandleFatal(text);
    }
    if (type != QtWarningMsg && type != QtCriticalMsg) {
        return;
    }
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    if (state.isHolding || state.phase != Phase::Running) {
        state.last = text;
    } else {
        PrintLine(qFormatLogMessage(type, context, text));
    }
}

}  // namespace

ZPKToolkitMessages::Start::Start(int (*runWithoutDesktop)()) {
    State& state = TheState();
    state.phase = Phase::Starting;
    state.runWithoutDesktop = runWithoutDesktop;
    state.last.clear();
    qInstallMessageHandler(HandleMessage);
}

ZPKToolkitMessages::Start::~Start() {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    state.phase = Phase::Running;
}

ZPKToolkitMessages::Held::Held() {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    state.isHolding = true;
    state.last.clear();
}

ZPKToolkitMessages::Held::~Held() {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    state.isHolding = false;
}

QString ZPKToolkitMessages::Held::last() const {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    return state.last;
}
