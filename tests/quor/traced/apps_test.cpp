// What the catalogue holds of an application from its segment's file to its end.
#include "quor/traced/apps.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>

#include "quor/catalogue/catalogue_store.h"
#include "quor/link/segment_folder.h"
#include "support/temp_dir.h"
#include "support/wait_for.h"

namespace {

class AppsTest : public testing::Test, public Apps::Router {
 protected:
  AppsTest() { EXPECT_TRUE(m_folder.Open(m_socket)); }
  ~AppsTest() override { m_apps.Stop(); }

  // An application's segment and its file, which lives until EndApplication.
  void BeginApplication() {
    m_segment = std::make_unique<SegmentMap>();
    ASSERT_TRUE(m_segment->Create({16, 4096, 4096}, 1, 42, m_folder.NewFile(1, 2)));
    ASSERT_TRUE(m_folder.Show());
  }
  void EndApplication() {
    close(m_link);
    m_link = -1;
    m_segment.reset();
    EXPECT_TRUE(WaitFor([this] { return m_io.poll(), m_apps.Running() == 0; }));
  }
  // Its link comes, and the hello says this name.
  void Link(const std::string& name) {
    close(m_link);
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
    m_link = ends[0];
    const auto pid = static_cast<std::uint32_t>(getpid());
    AppArrival arrival{{}, {}, OwnedDescriptor(m_io, ends[1]), pid, {}};
    arrival.hello.app = name;
    const char* reason = "";
    ASSERT_TRUE(arrival.segment.Open(dup(m_segment->Descriptor()), &reason)) << reason;
    std::string why;
    ASSERT_TRUE(m_apps.Arrive(std::move(arrival), &why)) << why;
  }
  std::string Registered() {
    std::string words;
    for (const std::string& name : m_catalogue.Registered())
      words += name + " " + std::to_string(m_catalogue.Find(name)->Instances()) + "\n";
    return words;
  }

  const TempDir m_place;
  const std::string m_socket = m_place.File("quord.sock");
  asio::io_context m_io;
  Hub m_hub;
  Catalogue m_catalogue{nullptr, kDefaultSettings};
  Apps m_apps{m_io, m_catalogue, *this, "here"};

 private:
  Hub& HubForMachine(const std::string&, const Account&) override { return m_hub; }
  void OnPlaceChanged() override {}

  SegmentFolder m_folder;
  std::unique_ptr<SegmentMap> m_segment;
  int m_link = -1;
};

TEST_F(AppsTest, OneThatWasFoundAndNeverBeganIsHeldUntilItsEnd) {
  BeginApplication();
  m_apps.Watch(m_socket);
  EXPECT_EQ(Registered(), "application 1\n");
  m_apps.ReleaseHeld();
  EndApplication();
  EXPECT_EQ(Registered(), "");
}

TEST_F(AppsTest, OneThatBeganIsHeldUntilItsEnd) {
  BeginApplication();
  Link("orders");
  EXPECT_EQ(Registered(), "orders 1\n");
  EndApplication();
  EXPECT_EQ(Registered(), "");
}

TEST_F(AppsTest, TheEntryOfAFormerNameIsHeldNoLonger) {
  BeginApplication();
  m_apps.Watch(m_socket);
  ASSERT_EQ(Registered(), "application 1\n");
  Link("orders");  // was found until now
  EXPECT_EQ(Registered(), "orders 1\n");
  Link("invoices");  // has begun
  EXPECT_EQ(Registered(), "invoices 1\n");
  EndApplication();
  EXPECT_EQ(Registered(), "");
}

}  // namespace
