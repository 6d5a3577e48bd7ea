#ifndef QUORVANE_APPS_TUNER_WINDOW_WINDOW_H
#define QUORVANE_APPS_TUNER_WINDOW_WINDOW_H

#include <string>
#include <vector>

#include "sizes/sizes.h"

struct GLFWwindow;

namespace quorvane::tuner {

/// A key that went down.
struct KeyPress {
    int key = 0;  ///< as GLFW names it
    bool ctrl = false;
    bool shift = false;
    bool repeated = false;
};

/// A window with an OpenGL ES 2 context, current on the thread that made it, and what comes to it.
class Window {
  public:
    /// Throws Error with one line where there is no display or no such context.
    Window(const std::string& title, Size size);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    GLFWwindow* handle() const { return m_window; }

    /// Pixels for each unit of the size that the desktop counts in.
    float scale() const;
    Size size() const;         ///< in the desktop's units
    Size framebuffer() const;  ///< in pixels
    bool closed() const;
    bool visible() const;  ///< not put away
    void setTitle(const std::string& title);

    /// Shows what was drawn and takes in what has come since.
    void next();

    /// While nothing is to be drawn: waits for something to come, `seconds` at most.
    void wait(double seconds);

    /// Since the last call.
    std::vector<KeyPress> takeKeys();
    std::vector<std::string> takeDrops();  ///< paths of files

  private:
    static void onKey(GLFWwindow* window, int key, int code, int action, int mods);
    static void onDrop(GLFWwindow* window, int count, const char** paths);

    GLFWwindow* m_window = nullptr;
    std::vector<KeyPress> m_keys;
    std::vector<std::string> m_drops;
};

}  // namespace quorvane::tuner

#endif
