#include "system/error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace quorvane {

bool isTemporary(int reason) noexcept {
    // Of room, memory, descriptors and processes; and of disks and servers that may answer again.
    constexpr int kReasons[] = {ENOSPC, EDQUOT, ENOMEM, EAGAIN, EMFILE, ENFILE, EIO, ESTALE, ETIMEDOUT};
    return std::find(std::begin(kReasons), std::end(kReasons), reason) != std::end(kReasons);
}

void throwFor(const std::string& what, int reason) {
    const std::string text = what + " (" + std::strerror(reason) + ")";
    if (isTemporary(reason)) throw TemporaryError(text);
    throw Error(text);
}

}  // namespace quorvane
