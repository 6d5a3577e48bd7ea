#include "drop.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <poll.h>

#include <chrono>
#include <memory>

namespace quorvane::test {
namespace {

constexpr long kVersion = 5;  // of XDND
constexpr auto kPatience = std::chrono::seconds(60);

/// The one that something is dragged from.
class DragSource {
  public:
    DragSource(::Display* display, Window target, const std::string& uris)
        : m_display(display),
          m_target(target),
          m_uris(uris),
          m_source(XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0)) {}

    bool drop(int x, int y) {
        XSetSelectionOwner(m_display, atom("XdndSelection"), m_source, CurrentTime);
        const Atom list = atom("text/uri-list");
        send("XdndEnter", {kVersion << 24, static_cast<long>(list), 0, 0});
        send("XdndPosition",
             {0, (long{x} << 16) | y, CurrentTime, static_cast<long>(atom("XdndActionCopy"))});
        if (!waitFor("XdndStatus")) return false;
        send("XdndDrop", {0, CurrentTime, 0, 0});
        return waitFor("XdndFinished");
    }

  private:
    Atom atom(const char* name) const { return XInternAtom(m_display, name, False); }

    void send(const char* type, const long (&words)[4]) const {
        XEvent event = {};
        event.xclient.type = ClientMessage;
        event.xclient.window = m_target;
        event.xclient.message_type = atom(type);
        event.xclient.format = 32;
        event.xclient.data.l[0] = static_cast<long>(m_source);
        for (int i = 0; i < 4; ++i) event.xclient.data.l[i + 1] = words[i];
        XSendEvent(m_display, m_target, False, NoEventMask, &event);
        XFlush(m_display);
    }

    /// Answers who asks for what is dragged meanwhile.
    bool waitFor(const char* type) const {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (std::chrono::steady_clock::now() < end) {
            if (XPending(m_display) == 0) {
                pollfd readable = {ConnectionNumber(m_display), POLLIN, 0};
                poll(&readable, 1, 100);
                continue;
            }
            XEvent event = {};
            XNextEvent(m_display, &event);
            if (event.type == ClientMessage && event.xclient.message_type == atom(type)) return true;
            if (event.type == SelectionRequest) give(event.xselectionrequest);
        }
        return false;
    }

    void give(const XSelectionRequestEvent& request) const {
        XChangeProperty(m_display, request.requestor, request.property, request.target, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(m_uris.data()),
                        static_cast<int>(m_uris.size()));
        XEvent answer = {};
        answer.xselection.type = SelectionNotify;
        answer.xselection.requestor = request.requestor;
        answer.xselection.selection = request.selection;
        answer.xselection.target = request.target;
        answer.xselection.property = request.property;
        answer.xselection.time = request.time;
        XSendEvent(m_display, request.requestor, False, NoEventMask, &answer);
        XFlush(m_display);
    }

    ::Display* m_display;
    Window m_target;
    std::string m_uris;
    Window m_source;
};

}  // namespace

bool dropFiles(const std::string& display_name, unsigned long window, int x, int y,
               const std::vector<std::string>& paths) {
    const std::unique_ptr<::Display, int (*)(::Display*)> display(XOpenDisplay(display_name.c_str()),
                                                                  XCloseDisplay);
    if (display == nullptr) return false;
    std::string uris;
    for (const std::string& path : paths) uris += "file://" + path + "\r\n";
    return DragSource(display.get(), window, uris).drop(x, y);
}

}  // namespace quorvane::test
