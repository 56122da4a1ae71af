// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/ScriptedFrontEnd.h"

#include <chrono>
#include <utility>

namespace zpk_test {

namespace {

std::string number(double value) {
    return std::to_string(static_cast<int>(value));
}

}  // namespace

class ScriptedFrontEnd::Indicator : public ZPKProgressIndicator {
public:
    explicit Indicator(ScriptedFrontEnd& owner) : m_owner(owner) {}
    void setMinValue(double value) override { m_owner.note("bar: min=" + number(value)); }
    void setMaxValue(double value) override { m_owner.note("bar: max=" + number(value)); }
    void setDoubleValue(double value) override { m_owner.note("bar: value=" + number(value)); }
    void setIndeterminate(bool yes) override {
        m_owner.note(yes ? "bar: indeterminate" : "bar: determinate");
    }
    void setUsesThreadedAnimation(bool yes) override {
        m_owner.note(yes ? "bar: threaded" : "bar: unthreaded");
    }
    void startAnimation() override { m_owner.note("bar: start"); }
    void stopAnimation() override { m_owner.note("bar: stop"); }
    void setNeedsDisplay() override { m_owner.note("bar: redraw"); }

private:
    ScriptedFrontEnd& m_owner;
};

class ScriptedFrontEnd::ProgressWindow : public ZPKProgressWindow {
public:
    explicit ProgressWindow(ScriptedFrontEnd& owner) : m_owner(owner), m_indicator(owner) {}
    ~ProgressWindow() override { m_owner.note("progress: gone"); }
    void center() override { m_owner.note("progress: center"); }
    void setTitle(const std::string& title) override { m_owner.note("progress: title=" + title); }
    void makeKeyAndOrderFront() override { m_owner.note("progress: front"); }
    void close() override { m_owner.note("progress: close"); }
    ZPKProgressIndicator& progressIndicator() override { return m_indicator; }

private:
    ScriptedFrontEnd& m_owner;
    Indicator m_indicator;
};

class ScriptedFrontEnd::DiscWindow : public ZPKCDSearchWindow {
public:
    explicit DiscWindow(ScriptedFrontEnd& owner) : m_owner(owner) {}
    ~DiscWindow() override { m_owner.note("disc: gone"); }
    void center() override { m_owner.note("disc: center"); }
    void setTitle(const std::string& title) override { m_owner.note("disc: title=" + title); }
    void makeKeyAndOrderFront() override { m_owner.note("disc: front"); }
    void close() override { m_owner.note("disc: close"); }
    void setActions(Actions actions) override { m_actions = std::move(actions); }
    void setMessage(const std::string& text) override { m_owner.note("disc: message=" + text); }
    void setProductList(const std::string& text) override { m_owner.note("disc: products=" + text); }
    void setSearchButtonTitle(const std::string& title) override { m_owner.note("disc: search=" + title); }
    void setCancelButtonTitle(const std::string& title) override { m_owner.note("disc: cancel=" + title); }
    void setFontName(ZPKCDSearchControl control, const std::string& name) override {
        m_owner.note("disc: font " + std::to_string(static_cast<int>(control)) + "=" + name);
    }
    const Actions& actions() const { return m_actions; }

private:
    ScriptedFrontEnd& m_owner;
    Actions m_actions;
};

class ScriptedFrontEnd::Session : public ZPKModalSession {
public:
    explicit Session(ScriptedFrontEnd& owner) : m_owner(owner) { m_owner.note("session: begin"); }
    ~Session() override { m_owner.note("session: end"); }
    void run() override { m_owner.runPendingActions(); }

private:
    ScriptedFrontEnd& m_owner;
};

std::vector<std::string> ScriptedFrontEnd::log() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_log;
}

void ScriptedFrontEnd::note(const std::string& line) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_log.push_back(line);
    }
    if (onLog) {
        onLog(line);
    }
}

int ScriptedFrontEnd::run(ZPKApplicationDelegate& delegate) {
    m_terminated = false;
    m_isOver = false;
    delegate.awakeFromNib();
    if (!m_terminated) {
        delegate.applicationWillFinishLaunching();
    }
    if (!m_terminated) {
        delegate.applicationDidFinishLaunching();
    }
    leaveOutPendingActions();
    return 0;
}

void ScriptedFrontEnd::leaveOutPendingActions() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isOver = true;
    for (PendingAction* const pending : m_pending) {
        pending->done = true;
    }
    m_pending.clear();
    m_changed.notify_all();
}

void ScriptedFrontEnd::terminate() {
    m_terminated = true;
    note("terminate");
}

void ScriptedFrontEnd::activateIgnoringOtherApps() {
    note("activate");
}

void ScriptedFrontEnd::setInterfaceLanguage(const std::string& code) {
    note("language=" + code);
}

void ScriptedFrontEnd::setMenuItemTitle(ZPKMenuItem item, const std::string& title) {
    note("menu " + std::to_string(static_cast<int>(item)) + "=" + title);
}

std::unique_ptr<ZPKProgressWindow> ScriptedFrontEnd::createProgressWindow() {
    return formsAreBroken ? nullptr : std::make_unique<ProgressWindow>(*this);
}

std::unique_ptr<ZPKCDSearchWindow> ScriptedFrontEnd::createCDSearchWindow() {
    return formsAreBroken ? nullptr : std::make_unique<DiscWindow>(*this);
}

void ScriptedFrontEnd::runAlert(const ZPKAlert& alert) {
    note("alert " + std::to_string(static_cast<int>(alert.style)) + ": " + alert.messageText + "|" +
         alert.informativeText + "|" + alert.buttonTitle);
}

int ScriptedFrontEnd::runModalForWindow(ZPKWindow& window) {
    note("modal: begin");
    auto* const disc = dynamic_cast<DiscWindow*>(&window);
    for (;;) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_stopped) {
                m_stopped = false;
                break;
            }
        }
        if (disc != nullptr && onDiscWindow) {
            onDiscWindow(disc->actions());
        } else if (disc != nullptr) {
            disc->actions().windowShouldClose();
        } else {
            runPendingActions();
        }
    }
    note("modal: end " + std::to_string(m_code));
    return m_code;
}

void ScriptedFrontEnd::stopModal(int code) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopped = true;
    m_code = code;
    m_changed.notify_all();
}

void ScriptedFrontEnd::abortModal() {
    stopModal(ZPKModalResponseAbort);
}

std::unique_ptr<ZPKModalSession> ScriptedFrontEnd::beginModalSessionForWindow(ZPKWindow&) {
    return std::make_unique<Session>(*this);
}

void ScriptedFrontEnd::performOnMainThreadAndWait(const std::function<void()>& action) {
    if (std::this_thread::get_id() == m_mainThread) {
        action();
        return;
    }
    PendingAction pending{&action, false};
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_isOver) {
        return;
    }
    m_pending.push_back(&pending);
    m_changed.notify_all();
    m_changed.wait(lock, [&pending] { return pending.done; });
}

void ScriptedFrontEnd::runPendingActions() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(10),
                       [this] { return !m_pending.empty() || m_stopped; });
    while (!m_pending.empty()) {
        PendingAction* const pending = m_pending.front();
        m_pending.pop_front();
        lock.unlock();
        (*pending->action)();
        lock.lock();
        pending->done = true;
        m_changed.notify_all();
    }
}

}  // namespace zpk_test
