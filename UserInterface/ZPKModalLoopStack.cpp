// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKModalLoopStack.h"

#include "UserInterface/ZPKFrontEnd.h"

void ZPKModalLoopStack::stop(int code) {
    if (ZPKModalLoop* loop = innermost()) {
        loop->stop(code);
    }
}

void ZPKModalLoopStack::abort() {
    if (ZPKModalLoop* loop = innermost()) {
        loop->stop(ZPKModalResponseAbort);
    } else {
        m_abortPending = true;
    }
}

void ZPKModalLoopStack::terminate() {
    m_terminated = true;
    for (ZPKModalLoop* loop : m_loops) {
        loop->stop(ZPKModalResponseAbort);
    }
}

bool ZPKModalLoopStack::isStopping() const {
    const ZPKModalLoop* loop = innermost();
    return m_terminated || (loop != nullptr && loop->isStopped());
}

ZPKModalLoop* ZPKModalLoopStack::innermost() const {
    const bool isModal = !m_loops.empty() && m_loops.back()->m_kind == ZPKModalLoop::Kind::Modal;
    return isModal ? m_loops.back() : nullptr;
}

ZPKModalLoop::ZPKModalLoop(ZPKModalLoopStack& stack, Kind kind)
    : m_stack(stack), m_kind(kind), m_code(ZPKModalResponseAbort) {
    m_stack.m_loops.push_back(this);
    m_stopped = m_stack.m_terminated;
    if (m_kind == Kind::Modal) {
        m_stopped = m_stopped || m_stack.m_abortPending;
        m_stack.m_abortPending = false;
    }
}

ZPKModalLoop::~ZPKModalLoop() {
    m_stack.m_loops.pop_back();
}

void ZPKModalLoop::stop(int code) {
    if (m_stopped) {
        return;
    }
    m_stopped = true;
    m_code = code;
    if (m_leave) {
        m_leave();
    }
}
