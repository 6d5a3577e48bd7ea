#define GLFW_INCLUDE_NONE
#include "apps/tuner/window/window.h"

#include <GLFW/glfw3.h>

#include <utility>

#include "system/error.h"

namespace quorvane::tuner {
namespace {

constexpr int kLeastWidth = 480, kLeastHeight = 320;

std::string lastError() {
    const char* words = nullptr;
    glfwGetError(&words);
    return words != nullptr ? words : "no reason was given";
}

}  // namespace

Window::Window(const std::string& title, Size size) {
    if (glfwInit() != GLFW_TRUE)
        throw Error("there is no display to open a window on (" + lastError() +
                    "); set DISPLAY, or use quorvane render");
    glfwWindowHint(GLFW_CLIENT_API, GLFW_OPENGL_ES_API);
    glfwWindowHint(GLFW_CONTEXT_CREATION_API, GLFW_EGL_CONTEXT_API);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 2);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 0);
    glfwWindowHint(GLFW_DEPTH_BITS, 0);
    glfwWindowHint(GLFW_STENCIL_BITS, 0);
    glfwWindowHint(GLFW_SCALE_TO_MONITOR, GLFW_TRUE);
    glfwWindowHintString(GLFW_X11_CLASS_NAME, "quorvane-tuner");
    glfwWindowHintString(GLFW_X11_INSTANCE_NAME, "quorvane-tuner");
    m_window = glfwCreateWindow(size.width, size.height, title.c_str(), nullptr, nullptr);
    if (m_window == nullptr) {
        const std::string reason = lastError();
        glfwTerminate();
        throw Error("the display has no OpenGL ES 2 for a window (" + reason + ")");
    }
    glfwSetWindowUserPointer(m_window, this);
    glfwSetWindowSizeLimits(m_window, kLeastWidth, kLeastHeight, GLFW_DONT_CARE, GLFW_DONT_CARE);
    glfwSetKeyCallback(m_window, onKey);
    glfwSetDropCallback(m_window, onDrop);
    glfwMakeContextCurrent(m_window);
    glfwSwapInterval(1);
}

Window::~Window() {
    glfwDestroyWindow(m_window);
    glfwTerminate();
}

float Window::scale() const {
    float x = 1.0f, y = 1.0f;
    glfwGetWindowContentScale(m_window, &x, &y);
    return x;
}

Size Window::size() const {
    Size size;
    glfwGetWindowSize(m_window, &size.width, &size.height);
    return size;
}

Size Window::framebuffer() const {
    Size size;
    glfwGetFramebufferSize(m_window, &size.width, &size.height);
    return size;
}

bool Window::closed() const { return glfwWindowShouldClose(m_window) == GLFW_TRUE; }

bool Window::visible() const { return glfwGetWindowAttrib(m_window, GLFW_ICONIFIED) == GLFW_FALSE; }

void Window::setTitle(const std::string& title) { glfwSetWindowTitle(m_window, title.c_str()); }

void Window::next() {
    glfwSwapBuffers(m_window);
    glfwPollEvents();
}

void Window::wait(double seconds) { glfwWaitEventsTimeout(seconds); }

std::vector<KeyPress> Window::takeKeys() { return std::exchange(m_keys, {}); }

std::vector<std::string> Window::takeDrops() { return std::exchange(m_drops, {}); }

void Window::onKey(GLFWwindow* window, int key, int /*code*/, int action, int mods) {
    if (action == GLFW_RELEASE) return;
    static_cast<Window*>(glfwGetWindowUserPointer(window))
        ->m_keys.push_back(
            {key, (mods & GLFW_MOD_CONTROL) != 0, (mods & GLFW_MOD_SHIFT) != 0, action == GLFW_REPEAT});
}

void Window::onDrop(GLFWwindow* window, int count, const char** paths) {
    for (int i = 0; i < count; ++i)
        static_cast<Window*>(glfwGetWindowUserPointer(window))->m_drops.emplace_back(paths[i]);
}

}  // namespace quorvane::tuner
