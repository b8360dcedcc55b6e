#include "base/rename_file.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cstddef>

#include "support/temp_dir.h"
#include "support/traced_child.h"

namespace {

class RenameTest : public testing::TestWithParam<bool (*)(const std::string&, const std::string&)> {
 protected:
  bool Rename(const std::string& from, const std::string& to) { return GetParam()(from, to); }
  TempDir m_temp;
};

TEST_P(RenameTest, TheFileHasTheNewNameOnly) {
  const std::string from = m_temp.File("a", "text"), to = m_temp.File("b");
  EXPECT_TRUE(Rename(from, to));
  EXPECT_EQ(ReadAll(to), "text");
  EXPECT_FALSE(std::filesystem::exists(from));
}

TEST_P(RenameTest, AFileInTheWayStaysAndSoDoesTheOther) {
  const std::string from = m_temp.File("a", "text"), to = m_temp.File("b", "other");
  EXPECT_FALSE(Rename(from, to));
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(ReadAll(from), "text");
  EXPECT_EQ(ReadAll(to), "other");
}

TEST_P(RenameTest, ALinkToNowhereIsInTheWayToo) {
  const std::string from = m_temp.File("a", "text"), to = m_temp.File("b");
  std::filesystem::create_symlink(m_temp.File("nowhere"), to);
  EXPECT_FALSE(Rename(from, to));
  EXPECT_EQ(ReadAll(from), "text");
}

TEST_P(RenameTest, AMissingFileIsReportedAsSuch) {
  EXPECT_FALSE(Rename(m_temp.File("a"), m_temp.File("b")));
  EXPECT_EQ(errno, ENOENT);
}

// In a child in which the kernel refuses to remove the file at `path`, with EIO, and every other
// one with EBUSY when `any`. Goes by the address of the text.
void RefuseRemoving(const char* path, bool any) {
  const auto low = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(path));
#ifdef __NR_unlink
  constexpr std::uint32_t kCall = __NR_unlink, kArgument = 0;
#else
  constexpr std::uint32_t kCall = __NR_unlinkat, kArgument = 1;
#endif
  constexpr std::uint32_t kLow = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? 4 : 0;
  sock_filter steps[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kCall, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args) + 8 * kArgument + kLow),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, low, 2, 0),
      BPF_STMT(BPF_RET | BPF_K, any ? SECCOMP_RET_ERRNO | EBUSY : SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
  };
  const sock_fprog program{std::size(steps), steps};
  EXPECT_EQ(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
  EXPECT_EQ(prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0) << errno;
}

TEST(RenameByLinkTest, ANameThatCannotBeGivenUpStaysTheOnlyOneAndTellsWhy) {
  const TempDir temp;
  const std::string from = temp.File("a", "text"), to = temp.File("b");
  TracedChild child([&](TracedChild&) {
    RefuseRemoving(from.c_str(), false);
    EXPECT_FALSE(RenameByLink(from, to));
    EXPECT_EQ(errno, EIO);
    return 0;
  });
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_EQ(ReadAll(from), "text");
  EXPECT_FALSE(std::filesystem::exists(to));
  // Why the first one failed, also when the second cannot be taken back.
  TracedChild other([&](TracedChild&) {
    RefuseRemoving(from.c_str(), true);
    EXPECT_FALSE(RenameByLink(from, to));
    EXPECT_EQ(errno, EIO);
    return 0;
  });
  EXPECT_EQ(other.Wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Ways, RenameTest, testing::Values(&RenameWithoutReplacing, &RenameByLink));

}  // namespace
