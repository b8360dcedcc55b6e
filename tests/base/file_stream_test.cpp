#include "base/file_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>
#include <thread>

#include "support/temp_dir.h"

namespace {

using FOStream = ds_File_t::FOStream_t;

class FileStream : public testing::Test {
 protected:
  FileStream() : m_path(m_dir.File("out")) {
    m_descriptor = open(m_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  }
  ~FileStream() override { close(m_descriptor); }
  std::string Written() const { return ReadAll(m_path); }

  TempDir m_dir;
  std::string m_path;
  int m_descriptor;
};

bool Put(ds_BufferedOutputStream_t& stream, std::string_view text) {
  std::size_t size = text.size();
  const bool taken = stream.WriteBuf(text.data(), &size);
  EXPECT_EQ(size, taken ? text.size() : 0u);
  return taken;
}

TEST_F(FileStream, BytesGoStraightToTheFile) {
  FOStream stream(m_descriptor);
  EXPECT_TRUE(stream.Write("abc", 3));
  EXPECT_TRUE(stream.Write("", 0));
  EXPECT_TRUE(stream.OK());
  EXPECT_EQ(Written(), "abc");
}

TEST_F(FileStream, AStreamWithoutADescriptorFails) {
  FOStream stream;
  EXPECT_FALSE(stream.Write("abc", 3));
  EXPECT_FALSE(stream.OK());
}

TEST_F(FileStream, GatheredBytesGoToTheFileInBlocksAndAtTheFlush) {
  FOStream stream;
  stream.Attach(m_descriptor, 4);
  EXPECT_TRUE(stream.Write("abc", 3));
  EXPECT_EQ(Written(), "");
  EXPECT_TRUE(stream.Write("d", 1));
  EXPECT_EQ(Written(), "");
  EXPECT_TRUE(stream.Write("e", 1));
  EXPECT_EQ(Written(), "abcd");
  EXPECT_TRUE(stream.Write("longer", 6));
  EXPECT_EQ(Written(), "abcdelonger");
  EXPECT_TRUE(stream.Write("f", 1));
  EXPECT_TRUE(stream.Flush());
  EXPECT_EQ(Written(), "abcdelongerf");
  EXPECT_TRUE(stream.Flush());
  EXPECT_EQ(Written(), "abcdelongerf");
}

TEST_F(FileStream, AFailedBlockIsReportedAtTheLatestByTheFlushAndNothingFollowsIt) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  FOStream stream;
  stream.Attach(full, 4);
  EXPECT_TRUE(stream.Write("abc", 3));
  EXPECT_FALSE(stream.Flush());
  EXPECT_FALSE(stream.Write("d", 1));
  EXPECT_FALSE(stream.Flush());
  EXPECT_FALSE(stream.OK());
  close(full);
}

TEST_F(FileStream, WhatWasGatheredForAnotherFileIsForgottenWithIt) {
  FOStream stream;
  stream.Attach(m_descriptor, 4);
  EXPECT_TRUE(stream.Write("abc", 3));
  stream.Attach(m_descriptor);
  EXPECT_TRUE(stream.Write("d", 1));
  EXPECT_EQ(Written(), "d");
}

TEST_F(FileStream, CloseAndTheEndOfTheBufferBringGatheredBytesToTheFile) {
  FOStream stream;
  stream.Attach(m_descriptor, 1000);
  {
    ds_BufferedOutputStream_t buffer(8);
    buffer.SetStream(stream);
    EXPECT_TRUE(Put(buffer, "0123456789"));
    EXPECT_EQ(Written(), "");
    EXPECT_TRUE(buffer.Close());
    EXPECT_EQ(Written(), "0123456789");
    EXPECT_TRUE(Put(buffer, "ab"));
  }
  EXPECT_EQ(Written(), "0123456789ab");
}

TEST_F(FileStream, AnErrorIsStickyUntilAnotherFileIsTakenUp) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  FOStream stream(full);
  EXPECT_FALSE(stream.Write("abc", 3));
  EXPECT_FALSE(stream.Write("", 0));
  EXPECT_FALSE(stream.OK());
  close(full);
  stream.Attach(m_descriptor);
  EXPECT_TRUE(stream.OK());
  EXPECT_TRUE(stream.Write("abc", 3));
  EXPECT_EQ(Written(), "abc");
}

// The writer waits for space in the pipe, and each signal interrupts its write: after a part of the
// block, or before its first byte.
TEST_F(FileStream, ShortAndInterruptedWritesAreCompleted) {
  struct sigaction nothing = {}, before = {};
  nothing.sa_handler = [](int) {};
  ASSERT_EQ(sigaction(SIGUSR1, &nothing, &before), 0);
  std::array<int, 2> ends;
  ASSERT_EQ(pipe(ends.data()), 0);
  std::string block(1 << 20, 'x');
  for (std::size_t at = 0; at < block.size(); ++at) block[at] = static_cast<char>(at % 251);
  std::string got;
  const pthread_t writer = pthread_self();
  std::thread reader([&] {
    char buffer[5000];
    for (ssize_t size = 0; (size = read(ends[0], buffer, sizeof buffer)) > 0;) {
      got.append(buffer, static_cast<std::size_t>(size));
      pthread_kill(writer, SIGUSR1);
    }
  });
  EXPECT_TRUE(FOStream(ends[1]).Write(block.data(), block.size()));
  close(ends[1]);
  reader.join();
  close(ends[0]);
  sigaction(SIGUSR1, &before, nullptr);
  EXPECT_EQ(got, block);
}

TEST_F(FileStream, SmallWritesAreHeldUntilOneDoesNotFit) {
  FOStream file(m_descriptor);
  ds_BufferedOutputStream_t stream(8);
  stream.SetStream(file);
  EXPECT_TRUE(Put(stream, "12345"));
  EXPECT_TRUE(Put(stream, "678"));
  EXPECT_EQ(Written(), "");
  EXPECT_TRUE(Put(stream, "9"));
  EXPECT_EQ(Written(), "12345678");
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Written(), "123456789");
}

TEST_F(FileStream, ABlockLongerThanTheBufferGoesThroughWholeAndInOrder) {
  FOStream file(m_descriptor);
  ds_BufferedOutputStream_t stream(8);
  stream.SetStream(file);
  EXPECT_TRUE(Put(stream, "ab"));
  EXPECT_TRUE(Put(stream, "the quick brown fox jumps"));
  EXPECT_TRUE(Put(stream, "yz"));
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Written(), "abthe quick brown fox jumpsyz");
}

TEST_F(FileStream, TheEndOfABufferedStreamHandsOverWhatItHoldsWithoutClose) {
  FOStream file(m_descriptor);
  {
    ds_BufferedOutputStream_t stream(1024);
    stream.SetStream(file);
    EXPECT_TRUE(Put(stream, "held"));
    EXPECT_EQ(Written(), "");
  }
  EXPECT_EQ(Written(), "held");
  EXPECT_TRUE(file.OK());
}

TEST_F(FileStream, AFullDiskAtTheLastFlushIsSeenAtTheFileStream) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  FOStream file(full);
  {
    ds_BufferedOutputStream_t stream(1024);
    stream.SetStream(file);
    EXPECT_TRUE(Put(stream, "held"));
    EXPECT_TRUE(file.OK());
  }
  EXPECT_FALSE(file.OK());
  close(full);
}

TEST_F(FileStream, CloseMayBeCalledTwiceAndTellsTheSame) {
  FOStream file(m_descriptor);
  ds_BufferedOutputStream_t stream(1024);
  stream.SetStream(file);
  EXPECT_TRUE(Put(stream, "once"));
  EXPECT_TRUE(stream.Close());
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Written(), "once");
}

TEST_F(FileStream, AfterAFailedWriteEveryLaterOneFailsAndTakesNothing) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  FOStream file(full);
  ds_BufferedOutputStream_t stream(4);
  stream.SetStream(file);
  EXPECT_TRUE(Put(stream, "1234"));
  EXPECT_FALSE(Put(stream, "5"));
  EXPECT_FALSE(Put(stream, ""));
  EXPECT_FALSE(stream.Close());
  EXPECT_FALSE(stream.Close());
  close(full);
}

TEST_F(FileStream, DiscardedBytesReachNoLaterFile) {
  FOStream file(m_descriptor);
  ds_BufferedOutputStream_t stream(1024);
  stream.SetStream(file);
  EXPECT_TRUE(Put(stream, "lost"));
  stream.Discard();
  EXPECT_TRUE(Put(stream, "kept"));
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Written(), "kept");
}

TEST_F(FileStream, AnotherStreamGetsOnlyWhatIsWrittenAfterItWasSet) {
  FOStream first(m_descriptor);
  const std::string secondPath = m_dir.File("second");
  const int descriptor = open(secondPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  FOStream second(descriptor);
  {
    ds_BufferedOutputStream_t stream(1024);
    stream.SetStream(first);
    EXPECT_TRUE(Put(stream, "one"));
    stream.SetStream(second);
    EXPECT_TRUE(Put(stream, "two"));
  }
  close(descriptor);
  EXPECT_EQ(Written(), "one");
  EXPECT_EQ(ReadAll(secondPath), "two");
}

TEST_F(FileStream, ABufferWithoutAStreamTakesNothing) {
  ds_BufferedOutputStream_t stream(1024);
  EXPECT_FALSE(Put(stream, "x"));
  EXPECT_TRUE(stream.Close());
}

}  // namespace
