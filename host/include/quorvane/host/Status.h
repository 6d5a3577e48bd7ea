#ifndef QUORVANE_HOST_STATUS_H
#define QUORVANE_HOST_STATUS_H

#include <string>
#include <utility>

namespace quorvane {

/// Success, or the one sentence that says what failed and what would work.
class [[nodiscard]] Status {
  public:
    static Status success() noexcept { return Status(); }
    static Status failure(std::string sentence) noexcept { return Status(std::move(sentence)); }

    bool ok() const noexcept { return m_sentence.empty(); }
    explicit operator bool() const noexcept { return ok(); }

    /// Empty on success; no line end.
    const std::string& message() const& noexcept { return m_sentence; }
    std::string message() && noexcept { return std::move(m_sentence); }

  private:
    Status() noexcept = default;
    explicit Status(std::string sentence) noexcept : m_sentence(std::move(sentence)) {}

    std::string m_sentence;
};

}  // namespace quorvane

#endif
