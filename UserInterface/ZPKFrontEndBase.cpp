// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKFrontEndBase.h"

#include <utility>

ZPKFrontEndBase::ZPKFrontEndBase(std::function<void()> wake) : m_queue(std::move(wake)) {}

int ZPKFrontEndBase::run(ZPKApplicationDelegate& delegate) {
    if (!prepare()) {
        return 1;
    }
    sendMessages(delegate);
    while (!m_loops.isTerminated()) {
        ZPKModalLoop loop(m_loops, ZPKModalLoop::Kind::Idle);
        runLoop(loop);
    }
    m_queue.close();
    return m_exitStatus;
}

void ZPKFrontEndBase::sendMessages(ZPKApplicationDelegate& delegate) {
    using Message = void (ZPKApplicationDelegate::*)();
    constexpr Message kMessages[] = {
        &ZPKApplicationDelegate::awakeFromNib,
        &ZPKApplicationDelegate::applicationWillFinishLaunching,
        &ZPKApplicationDelegate::applicationDidFinishLaunching,
    };
    for (const Message message : kMessages) {
        if (m_loops.isTerminated()) {
            return;
        }
        (delegate.*message)();
    }
}

void ZPKFrontEndBase::terminate() {
    m_loops.terminate();
}

int ZPKFrontEndBase::runModalForWindow(ZPKWindow& window) {
    ZPKModalLoop loop(m_loops, ZPKModalLoop::Kind::Modal);
    if (!m_loops.isTerminated()) {
        runLoopForWindow(window, loop);
    }
    return loop.code();
}

void ZPKFrontEndBase::stopModal(int code) {
    m_loops.stop(code);
}

void ZPKFrontEndBase::abortModal() {
    m_queue.post([this] { m_loops.abort(); });
}

void ZPKFrontEndBase::performOnMainThreadAndWait(const std::function<void()>& action) {
    m_queue.performAndWait(action);
}

void ZPKFrontEndBase::closeToOtherThreads() {
    m_queue.close();
}
