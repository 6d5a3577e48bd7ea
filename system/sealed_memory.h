#ifndef QUORVANE_SYSTEM_SEALED_MEMORY_H
#define QUORVANE_SYSTEM_SEALED_MEMORY_H

#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>

namespace quorvane {

/// Bytes in a memory file that nobody can change, cut or lengthen any more, to be handed to another process:
/// the one that reads them need not trust the one that wrote them.
class SealedMemory {
  public:
    /// Writes bytes into a new memory file, and seals it.
    class Writer {
      public:
        /// Throws Error where there is no memory.
        Writer();
        ~Writer();
        Writer(const Writer&) = delete;
        Writer& operator=(const Writer&) = delete;

        /// Throws Error where there is no memory.
        void write(const void* bytes, size_t count);

        SealedMemory finish();

      private:
        int m_descriptor;
    };

    /// Takes over a descriptor that another process has sent, and closes it. Nothing where it is no sealed
    /// memory file.
    static std::optional<SealedMemory> received(int descriptor);

    SealedMemory(SealedMemory&& other) noexcept;
    SealedMemory& operator=(SealedMemory&& other) noexcept;
    ~SealedMemory();

    std::string_view bytes() const noexcept { return {m_bytes, m_size}; }
    int descriptor() const noexcept { return m_descriptor; }

  private:
    SealedMemory() = default;

    int m_descriptor = -1;
    const char* m_bytes = nullptr;
    size_t m_size = 0;
};

/// Sends a memory file through a socket between processes. False where the other end is gone.
bool send(int socket, const SealedMemory& memory) noexcept;

/// Waits for one, for `most_time` at most. Nothing where there is none by then, the other end is gone, or it
/// has sent anything else.
std::optional<SealedMemory> receive(int socket,
                                    std::optional<std::chrono::milliseconds> most_time = std::nullopt);

}  // namespace quorvane

#endif
