// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKToolkitMessages.h"

#include <unistd.h>

#include <QLoggingCategory>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "Base/ZPKMutex.h"
#include "Base/ZPKTerminalText.h"
#include "Base/ZPKTraceText.h"

namespace {

enum class Phase { Starting, WithoutDesktop, Running };

struct State {
    ZPKMutex mutex;
    Phase phase ZPK_GUARDED_BY(mutex) = Phase::Running;
    bool isHolding ZPK_GUARDED_BY(mutex) = false;
    QString last ZPK_GUARDED_BY(mutex);
    int (*runWithoutDesktop)() ZPK_GUARDED_BY(mutex) = nullptr;
};

State& theState() {
    static State state;
    return state;
}

void printLine(const QString& text) {
    const std::string whole = ZPKTerminalText::harmless(text.toStdString());
    std::fprintf(stderr, "%s\n", ZPKTraceText(whole).text().c_str());
}

[[noreturn]] void leaveToolkit(const QString& reason, int (*run)()) {
    printLine(QStringLiteral("Cannot use the desktop: ") + reason.section(QLatin1Char('\n'), 0, 0));
    const int status = run == nullptr ? 1 : run();
    std::fflush(nullptr);
    ::_exit(status);
}

/// What is left to do when the toolkit gives up while it starts.
struct Escape {
    QString reason;
    int (*run)() = nullptr;
};

/// Nothing once the toolkit has started, or when it gives up a second time.
std::optional<Escape> takeEscape(const QString& text) {
    State& state = theState();
    const ZPKMutexLock lock(state.mutex);
    if (state.phase != Phase::Starting) {
        return std::nullopt;
    }
    state.phase = Phase::WithoutDesktop;
    // What came before says what is wrong; the fatal message only that there is no way on.
    return Escape{state.last.isEmpty() ? text : state.last, state.runWithoutDesktop};
}

[[noreturn]] void handleFatal(const QString& text) {
    if (const std::optional<Escape> escape = takeEscape(text)) {
        leaveToolkit(escape->reason, escape->run);
    }
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
    const ZPKMutexLock lock(state.mutex);
    if (state.isHolding || state.phase != Phase::Running) {
        state.last = text;
    } else {
        printLine(qFormatLogMessage(type, context, text));
    }
}

}  // namespace

ZPKToolkitMessages::Start::Start(int (*runWithoutDesktop)()) {
    {
        State& state = theState();
        const ZPKMutexLock lock(state.mutex);
        state.phase = Phase::Starting;
        state.runWithoutDesktop = runWithoutDesktop;
        state.last.clear();
    }
    qInstallMessageHandler(handleMessage);
}

ZPKToolkitMessages::Start::~Start() {
    State& state = theState();
    const ZPKMutexLock lock(state.mutex);
    state.phase = Phase::Running;
}

ZPKToolkitMessages::Held::Held() {
    State& state = theState();
    const ZPKMutexLock lock(state.mutex);
    state.isHolding = true;
    state.last.clear();
}

ZPKToolkitMessages::Held::~Held() {
    State& state = theState();
    const ZPKMutexLock lock(state.mutex);
    state.isHolding = false;
}

QString ZPKToolkitMessages::Held::last() const {
    State& state = theState();
    const ZPKMutexLock lock(state.mutex);
    return state.last;
}
