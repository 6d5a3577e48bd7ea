// The worker of the decoder's tests: worker ARGUMENT, started by media/decoder. What QUORVANE_TEST_WORKER
// says it is:
//   honest   with little time and memory
//   crashes  over every file
//   hangs up over every file, without an answer
//   babbles  answers with bytes that mean nothing
//   cheats   answers with a memory file that it could still change
//   absent   ends before it is ready

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "media/decoder/decoder.h"
#include "system/sealed_memory.h"

using namespace quorvane;

namespace {

SealedMemory bytes(const std::string& text) {
    SealedMemory::Writer writer;
    writer.write(text.data(), text.size());
    return writer.finish();
}

/// Sends a memory file without its seals.
void sendUnsealed() {
    const int file = memfd_create("unsealed", 0);
    char byte = 0;
    iovec part = {&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    *reinterpret_cast<int*>(CMSG_DATA(header)) = file;
    sendmsg(STDIN_FILENO, &message, MSG_NOSIGNAL);
}

}  // namespace

int main() {
    const char* kind = std::getenv("QUORVANE_TEST_WORKER");
    const std::string worker = kind != nullptr ? kind : "honest";
    if (worker == "absent") return 1;
    if (worker == "honest") {
        media::DecodingLimits limits;
        limits.memory = uint64_t{600} << 20;
        limits.seconds = 1.0;
        limits.seconds_a_million_pixels = 0.05;
        return media::serveDecoding(limits);
    }
    if (!send(STDIN_FILENO, bytes(""))) return 1;
    while (const std::optional<SealedMemory> request = receive(STDIN_FILENO)) {
        if (worker == "crashes") std::abort();
        if (worker == "hangs up") return 0;
        if (worker == "babbles")
            send(STDIN_FILENO, bytes("no sense at all, but enough of it to be read as numbers"));
        if (worker == "cheats") sendUnsealed();
    }
}
