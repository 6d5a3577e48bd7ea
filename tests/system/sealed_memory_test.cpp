#include "system/sealed_memory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace quorvane {
namespace {

SealedMemory memoryOf(const std::string& text) {
    SealedMemory::Writer writer;
    writer.write(text.data(), text.size());
    return writer.finish();
}

TEST(SealedMemory, HoldsWhatWasWritten) {
    EXPECT_EQ(memoryOf("some bytes").bytes(), "some bytes");
    EXPECT_EQ(memoryOf("").bytes(), "");
}

TEST(SealedMemory, CannotBeChangedAnyMore) {
    const SealedMemory memory = memoryOf("some bytes");
    EXPECT_EQ(write(memory.descriptor(), "x", 1), -1);
    EXPECT_EQ(ftruncate(memory.descriptor(), 2), -1);
    EXPECT_EQ(mmap(nullptr, 4, PROT_READ | PROT_WRITE, MAP_SHARED, memory.descriptor(), 0), MAP_FAILED);
}

TEST(SealedMemory, GoesThroughASocket) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    EXPECT_TRUE(send(ends[0], memoryOf("some bytes")));
    const std::optional<SealedMemory> received = receive(ends[1]);
    ASSERT_TRUE(received);
    EXPECT_EQ(received->bytes(), "some bytes");
    close(ends[0]);
    EXPECT_FALSE(receive(ends[1])) << "the other end is gone";
    EXPECT_FALSE(send(ends[1], memoryOf("late")));
    close(ends[1]);
}

TEST(SealedMemory, IsNotWaitedForLongerThanIsSaid) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    EXPECT_FALSE(receive(ends[1], std::chrono::milliseconds(1)));
    close(ends[0]);
    close(ends[1]);
}

// Whoever sent it could change it while it is read.
TEST(SealedMemory, IsNotTakenUnsealed) {
    const int file = memfd_create("unsealed", 0);
    ASSERT_EQ(write(file, "abc", 3), 3);
    EXPECT_FALSE(SealedMemory::received(file));
}

}  // namespace
}  // namespace quorvane
