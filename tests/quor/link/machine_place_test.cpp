// Which service a program meets, and the folder in which all accounts of a machine make segments.
#include "quor/link/machine_place.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>

#include "quor/link/link_socket.h"
#include "quor/link/segment_folder.h"
#include "support/as_account.h"
#include "support/remove_segments.h"
#include "support/temp_dir.h"
#include "support/wait_for.h"

namespace {

constexpr uid_t kAlice = 65001, kBob = 65002;

class MachinePlaceTest : public testing::Test {
 protected:
  MachinePlaceTest() {
    chmod(m_above.Path().c_str(), 0755);
    EXPECT_EQ(mkdir(Folder().c_str(), 0755), 0);
    chmod(Folder().c_str(), 0755);
  }
  ~MachinePlaceTest() override { RemoveSegments(m_above.Path()); }
  std::string Folder() const { return m_above.File("quor"); }
  std::string Socket() const { return Folder() + "/quord.sock"; }
  std::string In(const std::string& name) const { return Folder() + "/segments/" + name; }
  // A socket at which somebody listens; -1 on failure.
  int Listen() const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    Socket().copy(address.sun_path, sizeof address.sun_path - 1);
    const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        chmod(Socket().c_str(), 0666) != 0 || listen(listening, 4) != 0)
      return -1;
    return listening;
  }
  static bool IsRoot() { return geteuid() == 0; }

  TempDir m_above;
};

TEST_F(MachinePlaceTest, TheServiceThatIsMetIsTheNamedOneThenTheMachinesThenTheUsers) {
  ServiceEnvironment environment;
  environment.runtimeFolder = "/own";
  environment.machineSocket = Socket();
  const std::string own = "/own/quor/quord.sock";
  EXPECT_EQ(ServiceSocketPath(environment), own) << "there is no socket";
  const int listening = Listen();
  ASSERT_GE(listening, 0);
  EXPECT_EQ(ServiceSocketPath(environment), Socket());
  EXPECT_EQ(OwnServiceSocketPath(environment), own);
  environment.program = "/bin/true";
  environment.autostart = "1";
  EXPECT_EQ(ServiceProgram(environment), "") << "no service of the user beside the machine's";
  environment.socket = "/named.sock";
  EXPECT_EQ(ServiceSocketPath(environment), "/named.sock");
  EXPECT_EQ(ServiceProgram(environment), "/bin/true");
  environment.socket.clear();
  environment.chosen = "/chosen.sock";
  EXPECT_EQ(ServiceSocketPath(environment), "/chosen.sock");
  environment.chosen.clear();
  const auto meetsItsOwn = [&] { return ServiceSocketPath(environment) == own; };
  chmod(Folder().c_str(), 0775);
  EXPECT_TRUE(meetsItsOwn()) << "its group may write to the folder";
  chmod(Folder().c_str(), 0757);
  EXPECT_TRUE(meetsItsOwn()) << "others may write to the folder";
  chmod(Folder().c_str(), 0755);
  chmod(m_above.Path().c_str(), 01777);
  EXPECT_TRUE(meetsItsOwn()) << "anybody could have made the folder";
  chmod(m_above.Path().c_str(), 0755);
  EXPECT_FALSE(meetsItsOwn());
  const std::string link = m_above.File("link");
  std::filesystem::create_symlink(Folder(), link);
  environment.machineSocket = link + "/quord.sock";
  EXPECT_TRUE(meetsItsOwn()) << "the folder is a link";
  environment.machineSocket = m_above.File("quor/plain");
  close(open(environment.machineSocket.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666));
  EXPECT_TRUE(meetsItsOwn()) << "that is no socket";
  close(listening);
}

TEST_F(MachinePlaceTest, ItsOwnerIsTrustedThereAndNowhereElse) {
  if (!IsRoot()) return;  // there is one user, who is trusted everywhere
  ASSERT_EQ(chown(Folder().c_str(), kAlice, kAlice), 0);
  ServiceEnvironment environment;
  environment.machineSocket = Socket();
  EXPECT_EQ(TrustedOwner(Socket(), environment), kAlice);
  EXPECT_EQ(TrustedOwner("/own/quord.sock", environment), 0u);
  environment.socket = Socket();
  EXPECT_EQ(TrustedOwner(Socket(), environment), kAlice) << "named, and the machine's all the same";
  environment.socket.clear();
  // Alice serves: Bob trusts her at the machine's place only.
  const auto alice = AsAccount(kAlice, [&] { return Listen() >= 0 ? (pause(), 0) : 1; });
  ASSERT_TRUE(WaitFor([&] { return HasMachineSocket(Socket()); }));
  EXPECT_EQ(
      RunAsAccount(kBob,
                   [&] {
                     const uid_t owner = TrustedOwner(Socket(), environment);
                     if (!WaitFor([&] { return ConnectToService(Socket().c_str(), owner) >= 0; }))
                       return 1;
                     return ConnectToService(Socket().c_str()) < 0 ? 0 : 2;
                   }),
      0);
  kill(alice, SIGKILL);
  WaitForExit(alice);
  // A folder that a plain user made, in a folder of his.
  ASSERT_EQ(chown(m_above.Path().c_str(), kAlice, kAlice), 0);
  EXPECT_EQ(RunAsAccount(kBob, [&] { return OwnerOfMachinePlace(Socket()) ? 1 : 0; }), 0);
}

TEST_F(MachinePlaceTest, TheEnvironmentMayNameAnotherPlace) {
  setenv("QUOR_MACHINE_SOCKET", Socket().c_str(), 1);
  EXPECT_EQ(ReadServiceEnvironment().machineSocket, Socket());
  unsetenv("QUOR_MACHINE_SOCKET");
  EXPECT_EQ(ReadServiceEnvironment().machineSocket, kMachineSocket);
}

class SharedSegmentsTest : public MachinePlaceTest {
 protected:
  // In a process of the account: a file that is complete. 0: done.
  int MakeFile(uid_t account) {
    return RunAsAccount(account, [&] {
      SegmentFolder folder;
      if (!folder.OpenOfMachine(Socket(), 0)) return 1;
      umask(0777);
      const int file = folder.NewFile(1, account);
      if (file < 0) return 2;
      return folder.Show() ? 0 : 3;
    });
  }
};

TEST_F(SharedSegmentsTest, EveryAccountMakesFilesWhichOnlyTheServiceSeesAndOpens) {
  if (!IsRoot()) return;  // there is one user
  SegmentFolder service;
  ASSERT_TRUE(service.MakeOfMachine(Socket()));
  struct stat status {};
  ASSERT_EQ(stat(In("").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 03733u);
  for (const uid_t account : {kAlice, kBob}) EXPECT_EQ(MakeFile(account), 0);
  const std::vector<std::string> names = service.Names();
  ASSERT_EQ(names.size(), 2u);
  for (const std::string& name : names) {
    const int file = service.OpenFile(name);
    ASSERT_GE(file, 0);
    ASSERT_EQ(fstat(file, &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0660u);
    EXPECT_EQ(status.st_gid, getegid());
    close(file);
    // Another account neither lists, opens nor removes it, even if it knows the name.
    const uid_t other = status.st_uid == kAlice ? kBob : kAlice;
    EXPECT_EQ(RunAsAccount(other,
                           [&] {
                             if (open(In("").c_str(), O_RDONLY | O_DIRECTORY) >= 0) return 1;
                             if (open(In(name).c_str(), O_RDONLY) >= 0) return 2;
                             if (unlink(In(name).c_str()) == 0) return 3;
                             const std::string mine = In("mine");
                             if (rename(In(name).c_str(), mine.c_str()) == 0) return 4;
                             return 0;
                           }),
              0);
  }
  SegmentFolder again;
  ASSERT_TRUE(again.MakeOfMachine(Socket()));
  EXPECT_TRUE(again.IsSame(service)) << "what waits there stays";
}

TEST_F(SharedSegmentsTest, WhatIsNoSegmentOfOneAccountIsNotOpenedAndIsRemoved) {
  if (!IsRoot()) return;  // there is one user
  SegmentFolder service;
  ASSERT_TRUE(service.MakeOfMachine(Socket()));
  ASSERT_EQ(MakeFile(kBob), 0);
  const std::string bobs = In(service.Names().front());
  const auto make = [this](const std::string& name, mode_t mode) {
    const int file = open(In(name).c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    return file >= 0 && fchmod(file, mode) == 0;
  };
  EXPECT_EQ(RunAsAccount(kAlice,
                         [&] {
                           if (symlink(bobs.c_str(), In("link").c_str()) != 0) return 1;
                           if (mkfifo(In("pipe").c_str(), 0660) != 0) return 2;
                           if (mkdir(In("folder").c_str(), 0770) != 0) return 3;
                           if (!make("open", 0666) || !make("closed", 0600)) return 4;
                           if (!make("twice", 0660)) return 5;
                           if (link(In("twice").c_str(), In("second").c_str()) != 0) return 6;
                           if (!make("foreign", 0660)) return 7;
                           // Her own group, as if the folder did not give its group.
                           return chown(In("foreign").c_str(), kAlice, kAlice) == 0 ? 0 : 8;
                         }),
            0);
  const auto names = {"link", "pipe", "folder", "open", "twice", "second", "foreign"};
  for (const char* const name : names) EXPECT_EQ(service.OpenFile(name), -1) << name;
  for (const char* const name : names) service.RemoveAnything(name);
  service.RemoveAnything("closed");
  ASSERT_EQ(service.Names().size(), 1u);
  EXPECT_TRUE(std::filesystem::exists(bobs));
}

TEST_F(SharedSegmentsTest, AnApplicationUsesOnlyAFolderOfTheOwnerWithTheRightMode) {
  if (!IsRoot()) return;  // there is one user
  SegmentFolder service;
  ASSERT_TRUE(service.MakeOfMachine(Socket()));
  ASSERT_EQ(MakeFile(kAlice), 0);
  ASSERT_EQ(chmod(In("").c_str(), 01733), 0);
  EXPECT_EQ(MakeFile(kAlice), 1) << "files would not get the group";
  ASSERT_EQ(chmod(In("").c_str(), 03777), 0);
  EXPECT_EQ(MakeFile(kAlice), 1) << "others list it";
  ASSERT_EQ(chmod(In("").c_str(), 02733), 0);
  EXPECT_EQ(MakeFile(kAlice), 1) << "others remove files";
  ASSERT_EQ(chmod(In("").c_str(), 03733), 0);
  ASSERT_EQ(chown(In("").c_str(), kBob, static_cast<gid_t>(-1)), 0);
  ASSERT_EQ(chmod(In("").c_str(), 03733), 0);
  EXPECT_EQ(MakeFile(kAlice), 1) << "it is another account's";
  SegmentFolder again;
  ASSERT_TRUE(again.MakeOfMachine(Socket())) << "the service makes a new one";
  EXPECT_FALSE(again.IsSame(service));
  EXPECT_EQ(MakeFile(kAlice), 0);
}

// One account may use up the descriptors of the service, which then looks at its folder.
TEST_F(SharedSegmentsTest, WhereDescriptorsAreShortTheFolderStaysAsItIs) {
  SegmentFolder service;
  ASSERT_TRUE(service.MakeOfMachine(Socket()));
  const auto isIt = [&] {
    SegmentFolder again;
    return again.MakeOfMachine(Socket()) && again.IsSame(service);
  };
  std::vector<int> taken;
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit few{64, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  for (int one; (one = open("/", O_PATH | O_CLOEXEC)) >= 0;) taken.push_back(one);
  EXPECT_FALSE(isIt());
  for (int left = 0; left < 3; ++left) {
    close(taken.back());
    taken.pop_back();
    isIt();
  }
  for (const int one : taken) close(one);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_TRUE(isIt());
}

}  // namespace
