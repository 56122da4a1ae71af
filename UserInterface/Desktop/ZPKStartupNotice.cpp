// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKStartupNotice.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

#include "Base/ZPKPath.h"

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <class Type>
using Reply = std::unique_ptr<Type, Free>;

/// More atoms than any window manager names.
constexpr std::uint32_t kMostAtoms = 4096;

xcb_window_t rootOf(xcb_connection_t* connection, int screenNumber) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (screenNumber-- > 0 && screens.rem > 1) {
        xcb_screen_next(&screens);
    }
    return screens.data->root;
}

std::string quoted(std::string_view text) {
    std::string value = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            value += '\\';
        }
        value += character;
    }
    return value + '"';
}

/// No other start on any machine of this display has the same; the time's mark is a part of the protocol.
std::string newIdentifier(xcb_timestamp_t time) {
    utsname machine{};
    ::uname(&machine);
    return "zephyrkit-" + std::string(machine.nodename) + "-" + std::to_string(::getpid()) + "-0_TIME" +
           std::to_string(time);
}

}  // namespace

std::unique_ptr<ZPKExpectedProgram> ZPKStartupNotice::send(const std::string& program,
                                                           const std::string& name) {
    std::unique_ptr<ZPKStartupNotice> notice(new ZPKStartupNotice);
    if (notice->m_root == XCB_NONE || !notice->isUnderstood()) {
        return nullptr;
    }
    notice->makeWindow();
    notice->m_identifier = newIdentifier(notice->serverTime());
    // A program whose toolkit does not know the protocol is known by the class of its window.
    notice->sendMessage("new: ID=" + quoted(notice->m_identifier) + " NAME=" + quoted(name) +
                        " SCREEN=" + std::to_string(notice->m_screenNumber) + " BIN=" + quoted(program) +
                        " WMCLASS=" + quoted(ZPKPath::lastComponent(program)));
    return notice;
}

ZPKStartupNotice::ZPKStartupNotice() : m_connection(xcb_connect(nullptr, &m_screenNumber)) {
    if (xcb_connection_has_error(m_connection.get()) == 0) {
        m_root = rootOf(m_connection.get(), m_screenNumber);
    }
}

ZPKStartupNotice::~ZPKStartupNotice() {
    if (!m_identifier.empty()) {
        sendMessage("remove: ID=" + quoted(m_identifier));
        // A connection that is dropped beside an event that nobody has read takes what was sent with it. An
        // answer says that the server has it.
        waitForServer();
    }
}

bool ZPKStartupNotice::isUnderstood() const {
    const Reply<xcb_get_property_reply_t> known(xcb_get_property_reply(
        m_connection.get(),
        xcb_get_property(m_connection.get(), 0, m_root, atom("_NET_SUPPORTED"), XCB_ATOM_ATOM, 0, kMostAtoms),
        nullptr));
    if (!known || known->format != 32) {
        return false;
    }
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(known.get()));
    const std::span<const xcb_atom_t> all(atoms, known->value_len);
    return std::ranges::find(all, atom("_NET_STARTUP_ID")) != all.end();
}

void ZPKStartupNotice::makeWindow() {
    constexpr std::uint32_t kValues[] = {1, XCB_EVENT_MASK_PROPERTY_CHANGE};
    m_window = xcb_generate_id(m_connection.get());
    xcb_create_window(m_connection.get(), XCB_COPY_FROM_PARENT, m_window, m_root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, kValues);
}

/// The server tells it with every change of a property; this one changes nothing.
xcb_timestamp_t ZPKStartupNotice::serverTime() const {
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_APPEND, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING,
                        8, 0, nullptr);
    xcb_flush(m_connection.get());
    while (const Reply<xcb_generic_event_t> event{xcb_wait_for_event(m_connection.get())}) {
        if (event->response_type == XCB_PROPERTY_NOTIFY) {
            xcb_property_notify_event_t change;
            std::memcpy(&change, event.get(), sizeof(change));
            return change.time;
        }
    }
    return XCB_CURRENT_TIME;
}

xcb_atom_t ZPKStartupNotice::atom(std::string_view name) const {
    const Reply<xcb_intern_atom_reply_t> found(xcb_intern_atom_reply(
        m_connection.get(),
        xcb_intern_atom(m_connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return found ? found->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void ZPKStartupNotice::waitForServer() const {
    const Reply<xcb_get_input_focus_reply_t> answer(
        xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
}

/// In pieces as long as an event holds, with the text's end.
void ZPKStartupNotice::sendMessage(const std::string& message) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = m_window;
    event.type = atom("_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t following = atom("_NET_STARTUP_INFO");
    for (std::size_t at = 0; at <= message.size(); at += sizeof(event.data.data8)) {
        std::memset(event.data.data8, 0, sizeof(event.data.data8));
        message.copy(static_cast<char*>(static_cast<void*>(event.data.data8)), sizeof(event.data.data8), at);
        xcb_send_event(m_connection.get(), 0, m_root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       static_cast<const char*>(static_cast<const void*>(&event)));
        event.type = following;
    }
    xcb_flush(m_connection.get());
}
