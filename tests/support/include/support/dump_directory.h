#ifndef QUORVANE_TESTS_SUPPORT_DUMP_DIRECTORY_H
#define QUORVANE_TESTS_SUPPORT_DUMP_DIRECTORY_H

#include <cstdint>
#include <string>
#include <vector>

namespace quorvane::test {

/// Holds the one directory that debug dumps go to, in the wanted state, for a test's lifetime: no other test
/// process touches it meanwhile, and afterwards everything created is gone.
class DumpDirectory {
  public:
    enum class State { present, absent };

    explicit DumpDirectory(State wanted);
    ~DumpDirectory();

    DumpDirectory(const DumpDirectory&) = delete;
    DumpDirectory& operator=(const DumpDirectory&) = delete;

    /// Empty when the state could be had, else the reason to skip with.
    const std::string& obstacle() const { return m_obstacle; }

    static std::string path(const std::string& file);
    /// The files in it, sorted.
    std::vector<std::string> files() const;

  private:
    int m_lock = -1;
    std::string m_obstacle;
    std::vector<std::string> m_created;
};

/// A directory of the test's own, removed with all its files.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string path(const std::string& file) const { return m_path + "/" + file; }

  private:
    std::string m_path;
};

bool fileExists(const std::string& path);
std::vector<uint8_t> fileBytes(const std::string& path);

/// A Netpbm file as the renderer writes it: magic, sizes, 255, one blank, then the pixels.
std::vector<uint8_t> netpbm(const std::string& magic, int width, int height,
                            const std::vector<uint8_t>& pixels);

}  // namespace quorvane::test

#endif
