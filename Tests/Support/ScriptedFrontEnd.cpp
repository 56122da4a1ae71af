// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/ScriptedFrontEnd.h"

#include <utility>

namespace zpk_test {

namespace {

constexpr int kSessionWaitMilliseconds = 10;

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
    bool run() override {
        m_owner.wait(-1, kSessionWaitMilliseconds);
        m_owner.runPendingActions();
        return !m_owner.isLoopStopped();
    }

private:
    ScriptedFrontEnd& m_owner;
};

ScriptedFrontEnd::ScriptedFrontEnd() : ZPKFrontEndBase([this] { wake(); }) {}

std::vector<std::string> ScriptedFrontEnd::log() const {
    const ZPKMutexLock lock(m_mutex);
    return m_log;
}

void ScriptedFrontEnd::note(const std::string& line) {
    {
        const ZPKMutexLock lock(m_mutex);
        m_log.push_back(line);
    }
    if (onLog) {
        onLog(line);
    }
}

void ScriptedFrontEnd::terminate() {
    ZPKFrontEndBase::terminate();
    note("terminate");
}

void ScriptedFrontEnd::activateIgnoringOtherApps() {
    note("activate");
}

void ScriptedFrontEnd::setInterfaceLanguage(const std::string& code) {
    note("language=" + code);
}

void ScriptedFrontEnd::setDisplayName(const std::string& name) {
    note("name=" + name);
}

void ScriptedFrontEnd::setMenuItemTitle(ZPKMenuItem item, const std::string& title) {
    note("menu " + std::to_string(static_cast<int>(item)) + "=" + title);
}

std::unique_ptr<ZPKProgressWindow> ScriptedFrontEnd::createProgressWindow() {
    if (formsAreBroken) {
        noteFailure();
        return nullptr;
    }
    return std::make_unique<ProgressWindow>(*this);
}

std::unique_ptr<ZPKCDSearchWindow> ScriptedFrontEnd::createCDSearchWindow() {
    if (formsAreBroken) {
        noteFailure();
        return nullptr;
    }
    return std::make_unique<DiscWindow>(*this);
}

void ScriptedFrontEnd::runAlert(const ZPKAlert& alert) {
    note("alert " + std::to_string(static_cast<int>(alert.style)) + ": " + alert.messageText + "|" +
         alert.informativeText + "|" + alert.buttonTitle);
}

std::unique_ptr<ZPKModalSession> ScriptedFrontEnd::beginModalSessionForWindow(ZPKWindow&) {
    return std::make_unique<Session>(*this);
}

void ScriptedFrontEnd::abortModal() {
    ZPKFrontEndBase::abortModal();
    const ZPKMutexLock lock(m_mutex);
    m_isAborted = true;
    m_aborted.notify_all();
}

void ScriptedFrontEnd::waitForAbort() {
    ZPKMutexLock lock(m_mutex);
    while (!m_isAborted) {
        lock.wait(m_aborted);
    }
}

void ScriptedFrontEnd::runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) {
    note("modal: begin");
    if (const auto* disc = dynamic_cast<const DiscWindow*>(&window)) {
        playPerson(*disc, loop);
    } else {
        runLoop(loop);
    }
    note("modal: end " + std::to_string(loop.code()));
}

void ScriptedFrontEnd::runLoop(ZPKModalLoop& loop) {
    // A test may stop the loop as it begins: what other threads ask is left to the next one then.
    while (!loop.isStopped()) {
        runPendingActions();
        if (!loop.isStopped()) {
            wait(-1, -1);
        }
    }
}

void ScriptedFrontEnd::playPerson(const DiscWindow& window, ZPKModalLoop& loop) {
    while (!loop.isStopped()) {
        runPendingActions();
        if (loop.isStopped()) {
            return;
        }
        if (onDiscWindow) {
            onDiscWindow(window.actions());
        } else {
            window.actions().windowShouldClose();
        }
    }
}

}  // namespace zpk_test
