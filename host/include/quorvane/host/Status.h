#ifndef QUORVANE_HOST_STATUS_H
#define QUORVANE_HOST_STATUS_H

#include <string>
#include <utility>

namespace quorvane {

/// Success, or the one sentence that says what failed and what would work.
class [[nodiscard]] Status {
  public:
    static Status success() { return Status(); }
    static Status failure(std::string sentence) { return Status(std::move(sentence)); }

    bool ok() const { return m_sentence.empty(); }
    explicit operator bool() const { return ok(); }

    /// Empty on success; no line end.
    const std::string& message() const { return m_sentence; }

  private:
    Status() = default;
    explicit Status(std::string sentence) : m_sentence(std::move(sentence)) {}

    std::string m_sentence;
};

}  // namespace quorvane

#endif
