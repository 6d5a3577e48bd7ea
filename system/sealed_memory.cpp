#include "system/sealed_memory.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <utility>

#include "system/error.h"

namespace quorvane {
namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

TemporaryError noMemory() {
    return TemporaryError(std::string("no memory to hand over: ") + std::strerror(errno));
}

/// A message of one byte that carries one descriptor.
struct Message {
    char byte = 0;
    iovec part = {&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr header = {};

    Message() {
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
    }
};

/// Whether there is something to read before `most_time` has passed.
bool awaitInput(int socket, std::optional<std::chrono::milliseconds> most_time) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    for (;;) {
        int left = -1;
        if (most_time) {
            const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
            left = static_cast<int>(std::max(*most_time - passed, std::chrono::milliseconds(0)).count());
        }
        pollfd polled = {socket, POLLIN, 0};
        const int ready = poll(&polled, 1, left);
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

}  // namespace

SealedMemory::Writer::Writer() : m_descriptor(memfd_create("quorvane", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
    if (m_descriptor < 0) throw noMemory();
}

SealedMemory::Writer::~Writer() {
    if (m_descriptor >= 0) close(m_descriptor);
}

void SealedMemory::Writer::write(const void* bytes, size_t count) {
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = ::write(m_descriptor, next, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) throw noMemory();
        next += written;
        count -= static_cast<size_t>(written);
    }
}

SealedMemory SealedMemory::Writer::finish() {
    if (fcntl(m_descriptor, F_ADD_SEALS, kSeals) != 0) throw noMemory();
    std::optional<SealedMemory> memory = received(std::exchange(m_descriptor, -1));
    if (!memory) throw noMemory();
    return *std::move(memory);
}

std::optional<SealedMemory> SealedMemory::received(int descriptor) {
    SealedMemory memory;
    memory.m_descriptor = descriptor;
    struct stat about = {};
    const int seals = fcntl(descriptor, F_GET_SEALS);
    if (seals < 0 || (seals & kSeals) != kSeals || fstat(descriptor, &about) != 0) return std::nullopt;
    memory.m_size = static_cast<size_t>(about.st_size);
    if (memory.m_size == 0) return memory;
    void* mapped = mmap(nullptr, memory.m_size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (mapped == MAP_FAILED) return std::nullopt;
    memory.m_bytes = static_cast<const char*>(mapped);
    return memory;
}

SealedMemory::SealedMemory(SealedMemory&& other) noexcept { *this = std::move(other); }

SealedMemory& SealedMemory::operator=(SealedMemory&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_bytes, other.m_bytes);
    std::swap(m_size, other.m_size);
    return *this;
}

SealedMemory::~SealedMemory() {
    if (m_bytes != nullptr) munmap(const_cast<char*>(m_bytes), m_size);
    if (m_descriptor >= 0) close(m_descriptor);
}

bool send(int socket, const SealedMemory& memory) noexcept {
    Message message;
    cmsghdr* control = CMSG_FIRSTHDR(&message.header);
    control->cmsg_level = SOL_SOCKET;
    control->cmsg_type = SCM_RIGHTS;
    control->cmsg_len = CMSG_LEN(sizeof(int));
    const int descriptor = memory.descriptor();
    std::memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
    for (;;) {
        const ssize_t sent = sendmsg(socket, &message.header, MSG_NOSIGNAL);
        if (sent >= 0 || errno != EINTR) return sent == 1;
    }
}

std::optional<SealedMemory> receive(int socket, std::optional<std::chrono::milliseconds> most_time) {
    if (!awaitInput(socket, most_time)) return std::nullopt;
    Message message;
    ssize_t got = 0;
    do {
        got = recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC);
    } while (got < 0 && errno == EINTR);
    const cmsghdr* control = CMSG_FIRSTHDR(&message.header);
    if (got != 1 || control == nullptr || control->cmsg_type != SCM_RIGHTS ||
        control->cmsg_len != CMSG_LEN(sizeof(int)))
        return std::nullopt;
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(control), sizeof descriptor);
    return SealedMemory::received(descriptor);
}

}  // namespace quorvane
