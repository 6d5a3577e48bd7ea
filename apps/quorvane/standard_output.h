#ifndef QUORVANE_APPS_STANDARD_OUTPUT_H
#define QUORVANE_APPS_STANDARD_OUTPUT_H

#include <string>

namespace quorvane::app {

/// While it lives, standard output goes to `path`, replaced, or nowhere when that is empty: the renderer
/// prints its timing lines there, and a program's output is its own. Throws media::Error when `path` cannot
/// be written.
class StandardOutputTo {
  public:
    explicit StandardOutputTo(const std::string& path);
    ~StandardOutputTo();

    StandardOutputTo(const StandardOutputTo&) = delete;
    StandardOutputTo& operator=(const StandardOutputTo&) = delete;

  private:
    int m_saved;
};

}  // namespace quorvane::app

#endif
