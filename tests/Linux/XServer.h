#pragma once

#include "Eventually.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// A program that ends with the test, however that ends.
class Program {
public:
    Program(const QString& program, const QStringList& arguments,
            const QProcessEnvironment& environment) {
        process_.setProcessEnvironment(environment);
        process_.setStandardErrorFile(QProcess::nullDevice());
        process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        process_.start(program, arguments);
        EXPECT_TRUE(process_.waitForStarted()) << qPrintable(program);
    }
    ~Program() { kill(); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void kill() {
        process_.kill();
        process_.waitForFinished();
    }
    qint64 id() const { return process_.processId(); }
    QProcess& process() { return process_; }

private:
    QProcess process_;
};

/// An X server of our own, without a screen.
class XServer {
public:
    XServer()
        : program_(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QStringLiteral("800x600x24"), QStringLiteral("-nolisten"),
                    QStringLiteral("tcp"), QStringLiteral("-noreset")},
                   QProcessEnvironment::systemEnvironment()) {
        EXPECT_TRUE(eventually([this] { return program_.process().canReadLine(); }));
        display_ = ':' + program_.process().readLine().trimmed();
    }

    const QByteArray& display() const { return display_; }
    void kill() { program_.kill(); }

    std::unique_ptr<Program> start(const char* program, const QStringList& arguments = {}) const {
        QProcessEnvironment environment;
        const auto set = [&](const char* name, const QString& value) {
            environment.insert(QLatin1String(name), value);
        };
        set("PATH", QString::fromLocal8Bit(qgetenv("PATH")));
        set("DISPLAY", QString::fromLatin1(display_));
        set("HOME", home_.path());
        set("GSETTINGS_BACKEND", QStringLiteral("memory"));
        set("NO_AT_BRIDGE", QStringLiteral("1"));
        set("DBUS_SESSION_BUS_ADDRESS", QStringLiteral("unix:path=/no/such/bus"));
        return std::make_unique<Program>(QString::fromLatin1(program), arguments, environment);
    }

private:
    QTemporaryDir home_;
    Program program_;
    QByteArray display_;
};

/// A client with windows as a test wants them. What it does has happened when the call returns.
class XClient {
public:
    explicit XClient(const XServer& server)
        : connection_(xcb_connect(server.display().constData(), nullptr), &xcb_disconnect)
        , root_(xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root) {}

    xcb_window_t root() const { return root_; }
    xcb_window_t newId() { return xcb_generate_id(connection_.get()); }

    xcb_atom_t atom(std::string_view name) {
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(connection_.get(),
                                  xcb_intern_atom(connection_.get(), 0,
                                                  static_cast<uint16_t>(name.size()), name.data()),
                                  nullptr),
            &std::free);
        return reply->atom;
    }

    void set(xcb_window_t window, std::string_view property, std::string_view type, uint8_t format,
             const void* data, size_t count) {
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, atom(property),
                            atom(type), format, static_cast<uint32_t>(count), data);
        sync();
    }
    void set(xcb_window_t window, std::string_view property, std::string_view type,
             const std::vector<uint32_t>& values) {
        set(window, property, type, 32, values.data(), values.size());
    }
    void setText(xcb_window_t window, std::string_view property, std::string_view type,
                 std::string_view bytes) {
        set(window, property, type, 8, bytes.data(), bytes.size());
    }
    void setClass(xcb_window_t window, const std::string& instance, const std::string& wmClass) {
        setText(window, "WM_CLASS", "STRING", instance + '\0' + wmClass + '\0');
    }
    void unset(xcb_window_t window, std::string_view property) {
        xcb_delete_property(connection_.get(), window, atom(property));
        sync();
    }

    xcb_window_t create(xcb_window_t id) {
        xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, id, root_, 0, 0, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        sync();
        return id;
    }
    xcb_window_t create() { return create(newId()); }
    xcb_window_t create(const std::string& instance, const std::string& wmClass) {
        const xcb_window_t window = create();
        setClass(window, instance, wmClass);
        return window;
    }
    void map(xcb_window_t window) {
        xcb_map_window(connection_.get(), window);
        sync();
    }
    void destroy(xcb_window_t window) {
        xcb_destroy_window(connection_.get(), window);
        sync();
    }

    /// Asks the window manager, as a taskbar does.
    void activate(xcb_window_t window) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = atom("_NET_ACTIVE_WINDOW");
        message.data.data32[0] = 2; // from a pager
        xcb_send_event(connection_.get(), 0, root_,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&message));
        sync();
    }

private:
    void sync() {
        std::free(xcb_get_input_focus_reply(connection_.get(),
                                            xcb_get_input_focus(connection_.get()), nullptr));
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_window_t root_;
};

/// Says what a window manager says, exactly as a test dictates. Ends like one, too.
class ScriptedWindowManager {
public:
    explicit ScriptedWindowManager(const XServer& server)
        : client_(server)
        , check_(client_.create()) {
        support({"_NET_SUPPORTED", "_NET_ACTIVE_WINDOW"});
        pointTo(check_);
    }
    ~ScriptedWindowManager() = default;
    ScriptedWindowManager(const ScriptedWindowManager&) = delete;
    ScriptedWindowManager& operator=(const ScriptedWindowManager&) = delete;

    XClient& client() { return client_; }
    xcb_window_t check() const { return check_; }

    void support(const std::vector<std::string_view>& hints) {
        std::vector<uint32_t> atoms;
        atoms.reserve(hints.size());
        for (const auto& hint : hints) {
            atoms.push_back(client_.atom(hint));
        }
        client_.set(client_.root(), "_NET_SUPPORTED", "ATOM", atoms);
    }
    /// What the check window says of itself.
    void pointTo(xcb_window_t window) {
        client_.set(client_.root(), "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check_});
        client_.set(check_, "_NET_SUPPORTING_WM_CHECK", "WINDOW", {window});
    }
    void setActive(xcb_window_t window) {
        client_.set(client_.root(), "_NET_ACTIVE_WINDOW", "WINDOW", {window});
    }
    void setClients(const std::vector<uint32_t>& windows) {
        client_.set(client_.root(), "_NET_CLIENT_LIST", "WINDOW", windows);
    }

private:
    XClient client_;
    xcb_window_t check_;
};

} // namespace orvanta
