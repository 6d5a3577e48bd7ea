#ifndef QUORVANE_TESTS_SUPPORT_GUARDED_BYTES_H
#define QUORVANE_TESTS_SUPPORT_GUARDED_BYTES_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

namespace quorvane::test {

/// Bytes between two pages that nobody may touch: one byte too far is a crash here and not on a device.
/// Only one end can lie exactly at such a page; `Against` chooses which.
class GuardedBytes {
  public:
    enum class Against { end, start };

    /// `size` bytes of `fill`.
    explicit GuardedBytes(size_t size, Against against = Against::end, uint8_t fill = 0xcd);
    GuardedBytes(const std::vector<uint8_t>& content, Against against = Against::end);
    ~GuardedBytes();

    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    /// Takes up another size, no larger than the first, at the same page: mapping pages anew for each of a
    /// hundred thousand cases would take longer than the cases.
    void hold(size_t size, uint8_t fill = 0xcd);
    void hold(const std::vector<uint8_t>& content);

    uint8_t* data() { return m_data; }
    const uint8_t* data() const { return m_data; }
    size_t size() const { return m_size; }
    std::vector<uint8_t> bytes() const { return {m_data, m_data + m_size}; }

    /// True while the accessible kilobyte beside the bytes, on the side without a no-access page, is as it
    /// was.
    bool surroundingsUntouched() const;

  private:
    uint8_t* nearStart() const;
    uint8_t* nearEnd() const;

    Against m_against;
    uint8_t* m_mapping = nullptr;
    size_t m_mapping_size = 0;
    uint8_t* m_pages = nullptr;
    size_t m_pages_size = 0;
    uint8_t* m_data = nullptr;
    size_t m_size = 0;
};

/// `size` bytes that only depend on `seed`, the same on every machine.
std::vector<uint8_t> noise(size_t size, uint32_t seed);

}  // namespace quorvane::test

#endif
