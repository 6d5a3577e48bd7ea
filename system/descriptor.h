#ifndef QUORVANE_SYSTEM_DESCRIPTOR_H
#define QUORVANE_SYSTEM_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace quorvane {

/// An open file of this process, closed by the destructor; or none.
class Descriptor {
  public:
    Descriptor() noexcept = default;
    /// Takes over `number`; a negative one is none.
    explicit Descriptor(int number) noexcept : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() { close(); }

    explicit operator bool() const noexcept { return m_number >= 0; }
    int number() const noexcept { return m_number; }

    void close() noexcept {
        if (m_number >= 0) ::close(m_number);
        m_number = -1;
    }

  private:
    int m_number = -1;
};

}  // namespace quorvane

#endif
