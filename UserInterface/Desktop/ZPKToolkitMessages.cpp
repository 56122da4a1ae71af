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

State& theState() {
    static State state;
    return state;
}

void printLine(const QString& text) {
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

[[noreturn]] void leaveToolkit(const QString& reason, int (*run)()) {
    printLine(QStringLiteral("Cannot use the desktop: ") + reason.section(QLatin1Char('\n'), 0, 0));
    const int status = run == nullptr ? 1 : run();
    std::fflush(nullptr);
    _exit(status);
}

void handleFatal(const QString& text) {
    State& state = theState();
    std::unique_lock lock(state.mutex);
    if (state.phase == Phase::Starting) {
        state.phase = Phase::WithoutDesktop;
        // What came before says what is wrong; the fatal message only that there is no way on.
        const QString reason = state.last.isEmpty() ? text : state.last;
        lock.unlock();
        leaveToolkit(reason, state.runWithoutDesktop);
    }
    lock.unlock();
    printLine(text);
    std::exit(1);
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtFatalMsg) {
        handleFatal(text);
    }
    if (type != QtWarningMsg && type != QtCriticalMsg) {
        return;
    }
    State& state = theState();
    const std::lock_guard lock(state.mutex);
    if (state.isHolding || state.phase != Phase::Running) {
        state.last = text;
    } else {
        printLine(qFormatLogMessage(type, context, text));
    }
}

}  // namespace

ZPKToolkitMessages::Start::Start(int (*runWithoutDesktop)()) {
    State& state = theState();
    state.phase = Phase::Starting;
    state.runWithoutDesktop = runWithoutDesktop;
    state.last.clear();
    qInstallMessageHandler(handleMessage);
}

ZPKToolkitMessages::Start::~Start() {
    State& state = theState();
    const std::lock_guard lock(state.mutex);
    state.phase = Phase::Running;
}

ZPKToolkitMessages::Held::Held() {
    State& state = theState();
    const std::lock_guard lock(state.mutex);
    state.isHolding = true;
    state.last.clear();
}

ZPKToolkitMessages::Held::~Held() {
    State& state = theState();
    const std::lock_guard lock(state.mutex);
    state.isHolding = false;
}

QString ZPKToolkitMessages::Held::last() const {
    State& state = theState();
    const std::lock_guard lock(state.mutex);
    return state.last;
}
