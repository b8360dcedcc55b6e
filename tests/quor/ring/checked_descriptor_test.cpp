// A descriptor whose number the application may give to another file.
#include "quor/ring/checked_descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

TEST(CheckedDescriptor, ANumberThatIsAnotherFileByNowIsNeitherUsedNorClosed) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  CheckedDescriptor own(ends[0]);
  EXPECT_EQ(own.Get(), ends[0]);
  const int other = memfd_create("x", MFD_CLOEXEC);
  ASSERT_EQ(dup2(other, ends[0]), ends[0]);
  EXPECT_EQ(own.Get(), -1);
  own.Close();
  EXPECT_NE(fcntl(ends[0], F_GETFD), -1);
  CheckedDescriptor moved(std::move(own));
  EXPECT_FALSE(moved.IsOpen());
  for (const int number : {ends[0], ends[1], other}) close(number);
}

TEST(CheckedDescriptor, ASocketOfTheSameKindIsAnotherFile) {
  int first[2], second[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, first), 0);
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, second), 0);
  CheckedDescriptor own(first[0]);
  ASSERT_EQ(dup2(second[0], first[0]), first[0]);
  EXPECT_EQ(own.Get(), -1);
  for (const int number : {first[0], first[1], second[0], second[1]}) close(number);
}

TEST(CheckedDescriptor, AFileThatIsOpenedAgainUnderTheNumberThatWasLostIsKept) {
  const int file = memfd_create("x", MFD_CLOEXEC);
  CheckedDescriptor own(dup(file));
  const int number = own.Get();
  close(number);
  ASSERT_EQ(dup(file), number);
  own = CheckedDescriptor(number);
  EXPECT_EQ(own.Get(), number);
  EXPECT_NE(fcntl(number, F_GETFD), -1);
  close(file);
}

TEST(CheckedDescriptor, TheNumbersOfStandardInputOutputAndErrorAreLeftFree) {
  const int saved = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  {
    const CheckedDescriptor own(memfd_create("x", MFD_CLOEXEC));
    EXPECT_GT(own.Get(), STDERR_FILENO);
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
  }
  if (saved >= 0) dup2(saved, STDIN_FILENO), close(saved);
}

}  // namespace
