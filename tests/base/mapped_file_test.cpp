#include "base/mapped_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <numeric>
#include <thread>
#include <vector>

#include "support/temp_dir.h"

namespace {

class MappedFileTest : public testing::Test {
 protected:
  std::shared_ptr<const MappedFile> Open(const std::string& path) {
    return MappedFile::Open(path, &m_why);
  }
  TempDir m_dir;
  std::string m_why;
};

const auto kPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

std::string Text(Bytes bytes) {
  return {bytes.begin(), bytes.end()};
}

// Read one by one, so that nothing is optimised away.
std::uint64_t SumOf(const std::uint8_t* begin, std::size_t bytes) {
  return std::accumulate(begin, begin + bytes, std::uint64_t{0});
}

TEST_F(MappedFileTest, TheWholeFileIsSeen) {
  const std::string short1 = "short", long1(3 * kPage + 17, 'x'), even(2 * kPage, 'y');
  for (const std::string& content : {short1, long1, even}) {
    const auto file = Open(m_dir.File("a", content));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Size(), content.size());
    EXPECT_EQ(Text(file->View()), content);
  }
}

TEST_F(MappedFileTest, ALargeFileLiesWhereTheKernelCanMapItInLargePieces) {
  constexpr std::size_t kHugePage = std::size_t{2} << 20;
  for (const std::size_t size : {kHugePage, kHugePage + 1, 3 * kHugePage - 1, 5 * kHugePage + 17}) {
    std::string content(size, 'x');
    for (std::size_t at = 0; at < size; at += 1000) content[at] = static_cast<char>(at / 1000);
    const auto file = Open(m_dir.File("a", content));
    ASSERT_TRUE(file);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(file->View().data()) % kHugePage, 0u) << size;
    EXPECT_TRUE(Text(file->View()) == content) << size;
    EXPECT_EQ(SumOf(file->View().data() + size, MappedFile::kGuardBytes), 0u) << size;
  }
}

TEST_F(MappedFileTest, ZerosStandAfterTheEndForTheLongestReachOfARecord) {
  EXPECT_EQ(MappedFile::kGuardBytes, 1u + 44 + 2 * 65535);
  for (const std::size_t size : {std::size_t{1}, kPage - 1, kPage, kPage + 1, 5 * kPage}) {
    const auto file = Open(m_dir.File("a", std::string(size, 'x')));
    ASSERT_TRUE(file);
    const std::uint8_t* const end = file->View().data() + size;
    EXPECT_EQ(end[-1], 'x');
    EXPECT_EQ(SumOf(end, MappedFile::kGuardBytes), 0u) << size;
  }
}

TEST_F(MappedFileTest, AnEmptyFileIsRefused) {
  EXPECT_FALSE(Open(m_dir.File("a", "")));
  EXPECT_EQ(m_why, "The file is empty");
}

// An address space of 32 bits has no room for such a file.
#if SIZE_MAX > UINT32_MAX
TEST_F(MappedFileTest, AFileOf4GiBIsRefusedAndOneByteLessIsNot) {
  const std::string path = m_dir.File("sparse", "x");
  ASSERT_EQ(truncate(path.c_str(), off_t{1} << 32), 0);
  EXPECT_FALSE(Open(path));
  EXPECT_EQ(m_why, "The file has 4 GiB or more");
  ASSERT_EQ(truncate(path.c_str(), (off_t{1} << 32) - 1), 0);
  const auto file = Open(path);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->Size(), 0xFFFFFFFFu);
  EXPECT_EQ(file->View().front(), 'x');
  EXPECT_EQ(file->View().back(), 0);
}
#endif

TEST_F(MappedFileTest, ADirectoryAFifoAndAMissingFileAreRefused) {
  EXPECT_FALSE(Open(m_dir.Path()));
  EXPECT_EQ(m_why, "Is a directory");
  ASSERT_EQ(mkfifo(m_dir.File("fifo").c_str(), 0600), 0);
  EXPECT_FALSE(Open(m_dir.File("fifo")));
  EXPECT_EQ(m_why, "Not a regular file");
  EXPECT_FALSE(Open(m_dir.File("none")));
  EXPECT_EQ(m_why, "No such file or directory");
  EXPECT_FALSE(MappedFile::Open(m_dir.File("none")));
}

TEST_F(MappedFileTest, AFileThatIsBeingWrittenIsRefused) {
  const OpenFile writer = CreateForWriting(m_dir.File("a"));
  EXPECT_FALSE(Open(m_dir.File("a")));
  EXPECT_EQ(m_why, "In use by this program");
}

TEST_F(MappedFileTest, AMappedFileCannotBeMadeAnewUntilItsLastHolderIsGone) {
  const std::string path = m_dir.File("a", "text");
  auto file = Open(path);
  auto holder = file;
  file.reset();
  EXPECT_FALSE(CreateForWriting(path));
  EXPECT_EQ(Text(holder->View()), "text");
  holder.reset();
  EXPECT_TRUE(CreateForWriting(path));
}

TEST_F(MappedFileTest, PagesCutOffByAnotherProgramReadAsZeros) {
  const std::string path = m_dir.File("a", std::string(64 * kPage + 5, 'x'));
  const auto file = Open(path);
  ASSERT_TRUE(file);
  ASSERT_EQ(truncate(path.c_str(), static_cast<off_t>(2 * kPage)), 0);
  const std::uint8_t* const data = file->View().data();
  EXPECT_EQ(SumOf(data, 2 * kPage), 2 * kPage * 'x');
  EXPECT_EQ(data[40 * kPage + 9], 0);
  EXPECT_EQ(SumOf(data + 2 * kPage, 62 * kPage), 0u);
  EXPECT_EQ(file->Size(), 64 * kPage + 5);
}

TEST_F(MappedFileTest, AFileCutToNothingReadsAsZerosAlsoWhenItWasReadBefore) {
  const std::string path = m_dir.File("a", std::string(8 * kPage, 'x'));
  const auto file = Open(path);
  ASSERT_TRUE(file);
  EXPECT_EQ(SumOf(file->View().data(), 8 * kPage), 8 * kPage * 'x');
  ASSERT_EQ(truncate(path.c_str(), 0), 0);
  EXPECT_EQ(SumOf(file->View().data(), 8 * kPage), 0u);
}

// A reserve of mappings, which the kernel limits for each process: a sanitizer needs a few when a
// large file is unmapped. Made by system calls, because the sanitizer's own functions map memory.
class SpareMappings {
 public:
  SpareMappings() {
    for (std::size_t page = 0; page < kPages; page += 2)
      EXPECT_EQ(syscall(SYS_mprotect, m_pages + static_cast<long>(page * kPage), kPage, PROT_READ),
                0);
  }
  ~SpareMappings() { syscall(SYS_munmap, m_pages, m_bytes); }
  SpareMappings(const SpareMappings&) = delete;
  SpareMappings& operator=(const SpareMappings&) = delete;

 private:
#ifdef SYS_mmap2
  static constexpr long kMap = SYS_mmap2;
#else
  static constexpr long kMap = SYS_mmap;
#endif
  static constexpr std::size_t kPages = 32;
  const std::size_t m_bytes = kPages * kPage;
  const long m_pages = syscall(kMap, 0, m_bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
};

// Each page that is mapped on its own takes some of the mappings that the kernel allows a process:
// 65,530 unless set otherwise.
TEST_F(MappedFileTest, CutPagesReadHereAndThereMayNeedMoreMappingsThanTheKernelAllows) {
  constexpr std::size_t kPages = 80000;
  // Each page takes two mappings: by the number in use before, one or none is left at the end.
  for (const bool odd : {false, true}) {
    void* const more =
        odd ? mmap(nullptr, kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) : nullptr;
    const std::string path = m_dir.File("sparse", "x");
    ASSERT_EQ(truncate(path.c_str(), static_cast<off_t>(kPages * kPage)), 0);
    const auto file = Open(path);
    ASSERT_TRUE(file);
    const SpareMappings spare;  // destroyed before the file
    ASSERT_EQ(truncate(path.c_str(), 0), 0);
    std::uint64_t sum = 0;
    for (std::size_t page = 0; page < kPages; page += 2) sum += file->View()[page * kPage];
    EXPECT_EQ(sum, 0u);
    if (more) munmap(more, kPage);
  }
}

TEST_F(MappedFileTest, SeveralThreadsMayMeetTheCutPagesOfSeveralFilesAtOnce) {
  std::vector<std::shared_ptr<const MappedFile>> files;
  for (int number = 0; number < 4; ++number) {
    const std::string path = m_dir.File(std::to_string(number), std::string(256 * kPage, 'x'));
    files.push_back(Open(path));
    ASSERT_TRUE(files.back());
    ASSERT_EQ(truncate(path.c_str(), 0), 0);
  }
  std::vector<std::uint64_t> sums(8, 1);
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < sums.size(); ++number) {
    threads.emplace_back([&files, &sums, number] {
      sums[number] = SumOf(files[number % 4]->View().data(), 256 * kPage);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(sums, std::vector<std::uint64_t>(8, 0));
}

TEST_F(MappedFileTest, BytesAppendedByAnotherProgramDoNotShowAfterTheEnd) {
  const std::string path = m_dir.File("a", std::string(kPage + 10, 'x'));
  const auto file = Open(path);
  ASSERT_TRUE(file);
  std::ofstream(path, std::ios::app) << std::string(3 * kPage, 'z');
  EXPECT_EQ(SumOf(file->View().data() + kPage + 10, MappedFile::kGuardBytes), 0u);
}

TEST_F(MappedFileTest, AFileReplacedOrRemovedStaysAsItWas) {
  const std::string path = m_dir.File("a", std::string(2 * kPage, 'x'));
  const auto file = Open(path);
  ASSERT_TRUE(file);
  ASSERT_EQ(rename(m_dir.File("b", "new").c_str(), path.c_str()), 0);
  EXPECT_EQ(SumOf(file->View().data(), 2 * kPage), 2 * kPage * 'x');
  ASSERT_EQ(unlink(path.c_str()), 0);
  EXPECT_EQ(SumOf(file->View().data(), 2 * kPage), 2 * kPage * 'x');
}

// A range whose file is gone, with no guard over it.
const volatile std::uint8_t* UnguardedCutPage() {
  const int descriptor = memfd_create("cut", MFD_CLOEXEC);
  EXPECT_EQ(ftruncate(descriptor, static_cast<off_t>(kPage)), 0);
  void* const bytes = mmap(nullptr, kPage, PROT_READ, MAP_SHARED, descriptor, 0);
  EXPECT_EQ(ftruncate(descriptor, 0), 0);
  close(descriptor);
  return static_cast<const volatile std::uint8_t*>(bytes);
}

using MappedFileDeathTest = MappedFileTest;

// Ended by the signal, which no handler took; a sanitizer reports it and exits.
bool DiedOfTheFault(int status) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return !WIFEXITED(status) || WEXITSTATUS(status) != 0;
#else
  return testing::KilledBySignal(SIGBUS)(status);
#endif
}
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr const char* kWordsOfTheFault = "Sanitizer.*BUS";
#else
constexpr const char* kWordsOfTheFault = "^$";
#endif

TEST_F(MappedFileDeathTest, AFaultElsewhereStillEndsTheProgram) {
  const auto file = Open(m_dir.File("a", std::string(kPage, 'x')));
  const auto* const page = UnguardedCutPage();
  EXPECT_EXIT(static_cast<void>(page[0]), DiedOfTheFault, kWordsOfTheFault);
}

TEST_F(MappedFileDeathTest, AFaultInAFileThatWasClosedStillEndsTheProgram) {
  const auto* const page = UnguardedCutPage();
  { const FaultGuard guard(const_cast<const std::uint8_t*>(page), kPage); }
  EXPECT_EXIT(static_cast<void>(page[0]), DiedOfTheFault, kWordsOfTheFault);
}

TEST_F(MappedFileDeathTest, ASentSignalStillEndsTheProgram) {
  const auto file = Open(m_dir.File("a", std::string(kPage, 'x')));
  EXPECT_EXIT(raise(SIGBUS), DiedOfTheFault, kWordsOfTheFault);
}

// In a process of its own, where no file has been mapped yet; without a temporary directory, which
// that process would leave behind.
TEST(MappedFileFirstDeathTest, AFaultElsewhereReachesTheHandlerThatWasThereBefore) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto fault = [] {
    struct sigaction earlier = {};
    earlier.sa_handler = [](int) { _exit(42); };
    sigaction(SIGBUS, &earlier, nullptr);
    if (MappedFile::Open("/proc/self/exe")) static_cast<void>(UnguardedCutPage()[0]);
  };
  EXPECT_EXIT(fault(), testing::ExitedWithCode(42), "^$");
  GTEST_FLAG_SET(death_test_style, "fast");
}

TEST_F(MappedFileTest, AGuardedRangeOfOnesOwnIsKeptAliveAndTheGuardMayMove) {
  const auto* const page = UnguardedCutPage();
  FaultGuard first(const_cast<const std::uint8_t*>(page), kPage);
  FaultGuard second = std::move(first);
  first = FaultGuard();
  EXPECT_EQ(page[kPage / 2], 0);
}

}  // namespace
