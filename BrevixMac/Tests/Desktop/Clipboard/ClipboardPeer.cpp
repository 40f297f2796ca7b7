// SPDX-License-Identifier: GPL-3.0-or-later
// Another client of the X server, written apart from the code under test: it owns or reads a selection by the
// book, or misbehaves on request. Speaks to the test in lines on standard output.
//
//   own SELECTION [--die | --stall | --understate | --refuse-targets] {NAME TYPE FORMAT FILE}…
//       "owning"; "read NAME" for each type that has been read; "lost" at the end. --die ends and --stall
//       stops in the middle of the first transfer in increments; --understate announces one byte for each. A
//       type of format 0 is offered and then refused.
//   read SELECTION TARGET FILE [--hang | --again] [--time TIME]
//       writes the bytes to FILE and says "TYPE FORMAT SIZE" or "refused"; --hang says "hanging" after the
//       first increment and stays; --again gives up after the first two increments and asks anew, twice.
//   multiple SELECTION TARGET…
//       reads all in one request and says "TARGET SIZE" or "TARGET refused" for each
//   paste SELECTION TARGET DELAY
//       opens a window that takes the focus, "ready"; reads DELAY milliseconds after each key that is pressed
//       in it and says "pasted SIZE"
//   time      says the server's time
//   manager   a clipboard manager: "managing", then "saved NAME…" when it has been asked to save and has read
//   all
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr unsigned slowness = 200'000; // microseconds to make each type

constexpr size_t increment = 100 * 1000;

xcb_connection_t *connection;
xcb_window_t window;

struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Pointer = std::unique_ptr<T, Free>;

void say(const std::string &line)
{
    std::cout << line << std::endl;
}

xcb_atom_t atom(const std::string &name)
{
    const auto cookie = xcb_intern_atom(connection, false, uint16_t(name.size()), name.c_str());
    const Pointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

std::string nameOf(xcb_atom_t value)
{
    const auto cookie = xcb_get_atom_name(connection, value);
    const Pointer<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(connection, cookie, nullptr));
    return reply
               ? std::string(xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get()))
               : std::string();
}

struct Data
{
    xcb_atom_t type = XCB_ATOM_NONE;
    int format = 8;
    std::string bytes;
};

Data takeProperty(xcb_atom_t property)
{
    const auto cookie =
        xcb_get_property(connection, true, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 28);
    const Pointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply)
        return {};
    return {reply->type, reply->format,
            std::string(static_cast<const char *>(xcb_get_property_value(reply.get())),
                        size_t(xcb_get_property_value_length(reply.get())))};
}

void put(xcb_window_t target, xcb_atom_t property, const Data &data, size_t from, size_t size)
{
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, target, property, data.type, uint8_t(data.format),
                        uint32_t(size / size_t(data.format / 8)), data.bytes.data() + from);
}

Pointer<xcb_generic_event_t> nextEvent()
{
    xcb_flush(connection);
    Pointer<xcb_generic_event_t> event(xcb_wait_for_event(connection));
    if (!event)
        std::exit(3);
    event->response_type &= 0x7f;
    return event;
}

xcb_timestamp_t serverTime()
{
    const xcb_atom_t property = atom("PEER_TIME");
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, property, XCB_ATOM_INTEGER, 32, 0, nullptr);
    for (;;) {
        const auto event = nextEvent();
        const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event.get());
        if (event->response_type == XCB_PROPERTY_NOTIFY && notify->atom == property)
            return notify->time;
    }
}

void answer(const xcb_selection_request_event_t &request, bool isConverted)
{
    xcb_selection_notify_event_t notify = {};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = isConverted ? request.property : xcb_atom_t(XCB_ATOM_NONE);
    char wire[32] = {};
    std::memcpy(wire, &notify, sizeof notify);
    xcb_send_event(connection, false, request.requestor, 0, wire);
}

class Owner
{
public:
    explicit Owner(const std::string &selection)
        : m_selection(atom(selection))
    {
    }

    bool parse(const std::vector<std::string> &arguments)
    {
        size_t index = 0;
        for (; index < arguments.size() && arguments[index].rfind("--", 0) == 0; ++index)
            m_mode = arguments[index];
        for (; index + 3 < arguments.size(); index += 4) {
            std::ifstream file(arguments[index + 3], std::ios::binary);
            add(arguments[index], {atom(arguments[index + 1]), std::stoi(arguments[index + 2]),
                                   std::string(std::istreambuf_iterator<char>(file), {})});
        }
        return index == arguments.size();
    }

    void add(const std::string &name, Data data)
    {
        m_order.push_back(atom(name));
        m_content[m_order.back()] = std::move(data);
    }

    bool take()
    {
        xcb_set_selection_owner(connection, window, m_selection, serverTime());
        const auto cookie = xcb_get_selection_owner(connection, m_selection);
        const Pointer<xcb_get_selection_owner_reply_t> reply(
            xcb_get_selection_owner_reply(connection, cookie, nullptr));
        return reply && reply->owner == window;
    }

    void serve()
    {
        say("owning");
        for (;;) {
            const auto event = nextEvent();
            if (event->response_type == XCB_SELECTION_CLEAR) {
                say("lost");
                return;
            }
            if (event->response_type == XCB_SELECTION_REQUEST)
                onRequest(*reinterpret_cast<const xcb_selection_request_event_t *>(event.get()));
            if (event->response_type == XCB_PROPERTY_NOTIFY)
                onProperty(*reinterpret_cast<const xcb_property_notify_event_t *>(event.get()));
        }
    }

private:
    void onRequest(const xcb_selection_request_event_t &request)
    {
        if (request.target == atom("TARGETS") && m_mode != "--refuse-targets") {
            std::vector<xcb_atom_t> targets{request.target, atom("TIMESTAMP")};
            targets.insert(targets.end(), m_order.begin(), m_order.end());
            xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                XCB_ATOM_ATOM, 32, uint32_t(targets.size()), targets.data());
            answer(request, true);
            return;
        }
        const auto found = m_content.find(request.target);
        if (found == m_content.end() || found->second.format == 0) {
            answer(request, false);
            return;
        }
        if (found->second.bytes.size() > increment) {
            beginTransfer(request);
        } else {
            if (m_mode == "--slow")
                usleep(slowness);
            put(request.requestor, request.property, found->second, 0, found->second.bytes.size());
            say("read " + nameOf(request.target));
        }
        answer(request, true);
    }

    void beginTransfer(const xcb_selection_request_event_t &request)
    {
        m_transfer = request;
        m_sent = 0;
        const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection, request.requestor, XCB_CW_EVENT_MASK, &mask);
        const auto size = m_mode == "--understate" ? 1 : uint32_t(m_content[request.target].bytes.size());
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                            atom("INCR"), 32, 1, &size);
    }

    void onProperty(const xcb_property_notify_event_t &notify)
    {
        if (notify.window != m_transfer.requestor || notify.atom != m_transfer.property ||
            notify.state != XCB_PROPERTY_DELETE)
            return;
        if (m_sent > 0 && m_mode == "--die")
            _exit(0);
        if (m_sent > 0 && m_mode == "--stall")
            return;
        const Data &data = m_content[m_transfer.target];
        const size_t size = std::min(increment, data.bytes.size() - m_sent);
        put(m_transfer.requestor, m_transfer.property, data, m_sent, size);
        m_sent += size;
        if (size == 0) {
            say("read " + nameOf(m_transfer.target));
            m_transfer = {};
        }
    }

    xcb_atom_t m_selection;
    std::string m_mode;
    std::vector<xcb_atom_t> m_order;
    std::map<xcb_atom_t, Data> m_content;
    xcb_selection_request_event_t m_transfer = {};
    size_t m_sent = 0;
};

enum class Patience { endless, none, hanging };

bool readTarget(const std::string &selection, xcb_atom_t target, xcb_timestamp_t time, Patience patience,
                Data &data)
{
    const xcb_atom_t property = atom("PEER_DATA");
    xcb_convert_selection(connection, window, atom(selection), target, property, time);
    for (;;) {
        const auto event = nextEvent();
        if (event->response_type == XCB_SELECTION_NOTIFY)
            break;
    }
    data = takeProperty(property);
    if (data.type == XCB_ATOM_NONE)
        return false;
    if (data.type != atom("INCR"))
        return true;
    data = {};
    for (;;) {
        const auto event = nextEvent();
        const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event.get());
        if (event->response_type != XCB_PROPERTY_NOTIFY || notify->atom != property ||
            notify->state != XCB_PROPERTY_NEW_VALUE)
            continue;
        if (patience == Patience::none && data.bytes.size() > 0)
            return false; // with an increment untaken
        if (patience == Patience::hanging) {
            say("hanging");
            for (;;)
                pause();
        }
        const Data part = takeProperty(property);
        if (part.type == XCB_ATOM_NONE)
            continue;
        data.type = part.type;
        data.format = part.format;
        data.bytes += part.bytes;
        if (part.bytes.empty())
            return true;
    }
}

int read(const std::vector<std::string> &arguments)
{
    Patience patience = Patience::endless;
    int attemptsGivenUp = 0;
    xcb_timestamp_t time = serverTime();
    for (size_t index = 3; index < arguments.size(); ++index) {
        if (arguments[index] == "--hang")
            patience = Patience::hanging;
        if (arguments[index] == "--again")
            attemptsGivenUp = 2;
        if (arguments[index] == "--time")
            time = xcb_timestamp_t(std::stoul(arguments.at(index + 1)));
    }
    Data data;
    const xcb_atom_t target = atom(arguments.at(1));
    for (int attempt = 0; attempt < attemptsGivenUp; ++attempt)
        readTarget(arguments.at(0), target, time, Patience::none, data);
    if (!readTarget(arguments.at(0), target, time, patience, data)) {
        say("refused");
        return 1;
    }
    std::ofstream(arguments.at(2), std::ios::binary) << data.bytes;
    say(nameOf(data.type) + " " + std::to_string(data.format) + " " + std::to_string(data.bytes.size()));
    return 0;
}

/// A program with the focus that is so busy that it reads late.
int paste(const std::vector<std::string> &arguments, xcb_window_t root)
{
    const xcb_window_t field = xcb_generate_id(connection);
    const uint32_t mask = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, field, root, 0, 0, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_map_window(connection, field);
    bool isReady = false;
    for (;;) {
        const auto event = nextEvent();
        if (event->response_type == XCB_FOCUS_IN && !std::exchange(isReady, true))
            say("ready");
        const auto *key = reinterpret_cast<const xcb_key_press_event_t *>(event.get());
        if (event->response_type != XCB_KEY_PRESS || (key->state & XCB_MOD_MASK_CONTROL) == 0)
            continue;
        usleep(useconds_t(std::stoul(arguments.at(2))) * 1000);
        Data data;
        readTarget(arguments.at(0), atom(arguments.at(1)), key->time, Patience::endless, data);
        say("pasted " + std::to_string(data.bytes.size()));
    }
}

int readMultiple(const std::vector<std::string> &arguments)
{
    const xcb_atom_t property = atom("PEER_PAIRS");
    std::vector<xcb_atom_t> pairs;
    for (size_t index = 1; index < arguments.size(); ++index) {
        pairs.push_back(atom(arguments[index]));
        pairs.push_back(atom("PEER_DATA_" + std::to_string(index)));
    }
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, atom("ATOM_PAIR"), 32,
                        uint32_t(pairs.size()), pairs.data());
    xcb_convert_selection(connection, window, atom(arguments[0]), atom("MULTIPLE"), property, serverTime());
    while (nextEvent()->response_type != XCB_SELECTION_NOTIFY)
        continue;
    const Data answered = takeProperty(property);
    std::memcpy(pairs.data(), answered.bytes.data(), std::min(answered.bytes.size(), pairs.size() * 4));
    for (size_t index = 0; index < pairs.size(); index += 2) {
        const bool isRefused = pairs[index + 1] == XCB_ATOM_NONE;
        say(nameOf(pairs[index]) + " " +
            (isRefused ? "refused" : std::to_string(takeProperty(pairs[index + 1]).bytes.size())));
    }
    return 0;
}

int manage()
{
    xcb_set_selection_owner(connection, window, atom("CLIPBOARD_MANAGER"), serverTime());
    xcb_flush(connection);
    say("managing");
    for (;;) {
        const auto event = nextEvent();
        if (event->response_type != XCB_SELECTION_REQUEST)
            continue;
        const auto request = *reinterpret_cast<const xcb_selection_request_event_t *>(event.get());
        Data targets;
        readTarget("CLIPBOARD", atom("TARGETS"), XCB_CURRENT_TIME, Patience::endless, targets);
        Owner owner("CLIPBOARD");
        std::string saved = "saved";
        const auto *atoms = reinterpret_cast<const xcb_atom_t *>(targets.bytes.data());
        for (size_t index = 0; index < targets.bytes.size() / sizeof(xcb_atom_t); ++index) {
            const std::string name = nameOf(atoms[index]);
            Data data;
            const bool isProtocol =
                name == "TARGETS" || name == "TIMESTAMP" || name == "MULTIPLE" || name == "SAVE_TARGETS";
            if (isProtocol ||
                !readTarget("CLIPBOARD", atoms[index], XCB_CURRENT_TIME, Patience::endless, data))
                continue;
            owner.add(name, data);
            saved += " " + name;
        }
        owner.take();
        answer(request, true);
        say(saved);
        owner.serve();
    }
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) || arguments.empty())
        return 2;
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    window = xcb_generate_id(connection);
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection, 0, window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0,
                      XCB_CW_EVENT_MASK, &mask);
    const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (arguments[0] == "own" && !rest.empty()) {
        Owner owner(rest[0]);
        if (!owner.parse({rest.begin() + 1, rest.end()}) || !owner.take())
            return 2;
        owner.serve();
        return 0;
    }
    if (arguments[0] == "read")
        return read(rest);
    if (arguments[0] == "paste" && rest.size() == 3)
        return paste(rest, screen->root);
    if (arguments[0] == "multiple" && !rest.empty())
        return readMultiple(rest);
    if (arguments[0] == "time") {
        say(std::to_string(serverTime()));
        return 0;
    }
    return arguments[0] == "manager" ? manage() : 2;
}
