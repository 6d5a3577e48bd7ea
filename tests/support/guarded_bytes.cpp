#include "support/guarded_bytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace quorvane::test {

namespace {

constexpr uint8_t kSurroundings = 0xa5;
constexpr size_t kNear = 1024;

}  // namespace

GuardedBytes::GuardedBytes(size_t size, Against against, uint8_t fill) : m_against(against) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    m_pages_size = std::max((size + page - 1) / page, size_t{1}) * page;
    m_mapping_size = m_pages_size + 2 * page;
    void* mapping = mmap(nullptr, m_mapping_size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) std::abort();
    m_mapping = static_cast<uint8_t*>(mapping);
    m_pages = m_mapping + page;
    if (mprotect(m_pages, m_pages_size, PROT_READ | PROT_WRITE) != 0) std::abort();
    hold(size, fill);
}

GuardedBytes::GuardedBytes(const std::vector<uint8_t>& content, Against against)
    : GuardedBytes(content.size(), against) {
    std::copy(content.begin(), content.end(), m_data);
}

GuardedBytes::~GuardedBytes() { munmap(m_mapping, m_mapping_size); }

void GuardedBytes::hold(size_t size, uint8_t fill) {
    if (size > m_pages_size) std::abort();
    m_size = size;
    m_data = m_against == Against::end ? m_pages + (m_pages_size - size) : m_pages;
    std::fill(nearStart(), nearEnd(), kSurroundings);
    std::fill_n(m_data, size, fill);
}

void GuardedBytes::hold(const std::vector<uint8_t>& content) {
    hold(content.size());
    std::copy(content.begin(), content.end(), m_data);
}

uint8_t* GuardedBytes::nearStart() const {
    return m_data - std::min(static_cast<size_t>(m_data - m_pages), kNear);
}

uint8_t* GuardedBytes::nearEnd() const {
    uint8_t* end = m_data + m_size;
    return end + std::min(static_cast<size_t>(m_pages + m_pages_size - end), kNear);
}

bool GuardedBytes::surroundingsUntouched() const {
    const auto untouched = [](uint8_t byte) { return byte == kSurroundings; };
    return std::all_of(nearStart(), m_data, untouched) && std::all_of(m_data + m_size, nearEnd(), untouched);
}

std::vector<uint8_t> noise(size_t size, uint32_t seed) {
    // A 64-bit linear congruential generator (Knuth's MMIX constants), its high bits.
    uint64_t state = seed;
    std::vector<uint8_t> bytes(size);
    for (uint8_t& byte : bytes) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        byte = static_cast<uint8_t>(state >> 56);
    }
    return bytes;
}

}  // namespace quorvane::test
