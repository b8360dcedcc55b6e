// Who besides its own user may reach a service of this machine: root, and the members of a group.
#include <grp.h>
#include <sys/stat.h>

#include "quor/client/trace_thread.h"
#include "quor/link/link.h"
#include "quor/link/named_service.h"
#include "quor/listeners/local_listener.h"
#include "quord_client.h"

namespace {

constexpr uid_t kNobody = 65534;
constexpr gid_t kMembers = 4711, kOthers = 4712;

TEST(Admission, IsOfTheUserWholeAndOfRootAndMembersAsClients) {
  const auto of = [](uid_t uid, std::vector<gid_t> groups, LocalListener::Group group = {}) {
    LocalPeer peer;
    peer.uid = uid;
    peer.groups = std::move(groups);
    return AdmissionOf(peer, 1000, group);
  };
  EXPECT_EQ(of(1000, {}), Admission::Owner);
  EXPECT_EQ(of(0, {}), Admission::Client);
  EXPECT_EQ(of(1001, {kMembers}), Admission::None);
  EXPECT_EQ(of(1001, {kMembers}, kMembers), Admission::Client);
  EXPECT_EQ(of(1001, {kOthers, kMembers}, kMembers), Admission::Client);
  EXPECT_EQ(of(1001, {kOthers}, kMembers), Admission::None);
  EXPECT_EQ(of(1000, {kOthers}, kMembers), Admission::Owner);
  std::string why;
  EXPECT_FALSE(GroupNamed("no such group", &why));
  EXPECT_EQ(why, "there is no group \"no such group\"");
}

// The groups that the kernel reports are those of the peer, however many it has.
TEST(Admission, TheGroupsOfAPeerAreTheKernels) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  LocalPeer peer;
  ASSERT_TRUE(PeerOfSocket(ends[0], &peer));
  EXPECT_EQ(peer.uid, geteuid());
  EXPECT_EQ(peer.pid, getpid());
  std::vector<gid_t> own(static_cast<std::size_t>(getgroups(0, nullptr)));
  ASSERT_EQ(getgroups(static_cast<int>(own.size()), own.data()), static_cast<int>(own.size()));
  own.push_back(getegid());
  EXPECT_EQ(peer.groups, own);
  for (const int end : ends) close(end);
}

// With the rights to be several users.
class AdmissionOfUsers : public ::testing::Test {
 protected:
  static bool IsRoot() { return geteuid() == 0; }
  // A name that the system has for a group that no process of the test is in.
  static std::string Group(gid_t* id) {
    for (const char* const name : {"users", "games", "mail", "daemon"})
      if (const group* const found = getgrnam(name)) {
        *id = found->gr_gid;
        return name;
      }
    return "";
  }
  // Is a client of this user with this one group welcomed?
  bool Enters(uid_t user, gid_t group) {
    const pid_t pid = fork();
    if (pid == 0) {
      if (setgroups(1, &group) != 0 || setgid(user) != 0 || setuid(user) != 0) _exit(90);
      const int socket = ConnectToNamedService(quord.SocketPath().c_str());
      if (socket < 0) _exit(1);
      quor::wire::Hello hello;
      hello.set_version(kProtocolVersion);
      hello.set_role(quor::wire::ROLE_CONFIGURE);
      SendOnLink(socket, EncodeFrame(FrameType::Hello, hello.SerializeAsString()));
      pollfd ready{socket, POLLIN, 0};
      poll(&ready, 1, 20000);
      char byte;
      _exit(recv(socket, &byte, 1, 0) == 1 ? 0 : 1);
    }
    const int status = WaitForExit(pid);
    EXPECT_LE(status, 1);
    return status == 0;
  }
  QuordProcess quord;
};

TEST_F(AdmissionOfUsers, MembersOfTheGroupEnterAndOthersDoNot) {
  gid_t id = 0;
  const std::string name = Group(&id);
  ASSERT_NE(name, "");
  if (!IsRoot()) {
    // Without rights a group that this user is not in cannot be given.
    EXPECT_EQ(quord.Run({"--foreground", "--group", "no-such-group"}), 1);
    EXPECT_TRUE(quord.Says("quord: there is no group \"no-such-group\""));
    return;
  }
  quord.Start({"--group", name});
  struct stat folder {
  }, socket{};
  ASSERT_EQ(stat(quord.Folder().Path().c_str(), &folder), 0);
  ASSERT_EQ(stat(quord.SocketPath().c_str(), &socket), 0);
  EXPECT_EQ(folder.st_mode & 0777u, 0710u);
  EXPECT_EQ(socket.st_mode & 0777u, 0660u);
  EXPECT_EQ(folder.st_gid, id);
  EXPECT_EQ(socket.st_gid, id);
  // Applications of the service's own user find the place for their memory all the same.
  EXPECT_EQ(access((quord.Folder().Path() + "/segments").c_str(), F_OK), 0);
  EXPECT_TRUE(Enters(kNobody, id));
  EXPECT_TRUE(quord.Says(" of user 65534 has connected to configure"));
  EXPECT_FALSE(Enters(kNobody, kOthers));
  // The rights of the files alone do not let anybody in.
  ASSERT_EQ(chmod(quord.Folder().Path().c_str(), 0711), 0);
  ASSERT_EQ(chmod(quord.SocketPath().c_str(), 0666), 0);
  EXPECT_FALSE(Enters(kNobody, kOthers));
  EXPECT_TRUE(quord.Says("of user 65534 is refused"));
  ASSERT_EQ(chmod(quord.Folder().Path().c_str(), 0710), 0);
  EXPECT_EQ(quord.Stop(), 0);
  // Without the option it is closed again.
  quord.Start();
  ASSERT_EQ(stat(quord.Folder().Path().c_str(), &folder), 0);
  EXPECT_EQ(folder.st_mode & 0777u, 0700u);
  EXPECT_FALSE(Enters(kNobody, id));
}

TEST_F(AdmissionOfUsers, RootLooksAndActsAtTheServiceOfAUserAndIsNotTracedThere) {
  if (!IsRoot()) return;  // there is one user, whose own service it is
  const std::string folder = quord.Folder().Path();
  ASSERT_EQ(chown(folder.c_str(), kNobody, kNobody), 0);
  quord.Start({}, "setpriv --reuid 65534 --regid 65534 --clear-groups");
  struct stat socket {};
  ASSERT_EQ(stat(quord.SocketPath().c_str(), &socket), 0);
  ASSERT_EQ(socket.st_uid, kNobody);
  const std::size_t before = quord.Log().size();
  EXPECT_EQ(quord.Run({"status"}), 0);
  EXPECT_NE(quord.Log().find("(process " + std::to_string(quord.Pid()) + ")", before),
            std::string::npos);
  NameMap names;
  std::string why;
  TraceThread_i* const monitor = TraceThread_i::ConnectToTraceService("", names, &why);
  ASSERT_TRUE(monitor) << why;
  monitor->Disconnect();
  // The library does not offer the traces of root's programs to a user's service, whose orders it
  // would have to follow. Neither does the service take them.
  EXPECT_LT(ConnectToService(quord.SocketPath().c_str()), 0);
  const int link = ConnectToNamedService(quord.SocketPath().c_str());
  ASSERT_GE(link, 0);
  EXPECT_TRUE(SendOnLink(link, EncodeHello({})));
  EXPECT_TRUE(quord.Says("is refused: only programs of the user of this service are traced"));
  close(link);
  EXPECT_EQ(quord.Run({"stop"}), 0);
  EXPECT_EQ(quord.Wait(), 0);
}

}  // namespace
