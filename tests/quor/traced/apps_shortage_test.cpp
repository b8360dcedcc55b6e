// Where descriptors are short, a segment waits until there are some again.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <list>
#include <optional>

#include "quor/catalogue/catalogue_store.h"
#include "quor/link/segment_folder.h"
#include "quor/traced/apps.h"
#include "support/system_lacks.h"
#include "support/temp_dir.h"
#include "support/wait_for.h"

namespace {

using namespace std::chrono_literals;

class AppsShortageTest : public testing::Test, public Apps::Router {
 protected:
  AppsShortageTest() {
    EXPECT_TRUE(m_folder.Open(m_socket));
    m_apps.Watch(m_socket);
    m_apps.ReleaseHeld();
  }
  ~AppsShortageTest() override { m_apps.Stop(); }
  // One that comes and ends: a sanitizer takes descriptors where it sees a type of object for the
  // first time.
  void SetUp() override {
    Make();
    Show();
    ASSERT_TRUE(Run(1));
    m_segments.clear();
    ASSERT_TRUE(Run(0));
  }

  // From now on the process gets exactly so many descriptors.
  void Leave(int free) {
    m_limit.reset();
    int number = 0;
    for (int found = 0; found < free || fcntl(number, F_GETFD) >= 0; ++number)
      found += fcntl(number, F_GETFD) < 0 ? 1 : 0;
    m_limit.emplace(RLIMIT_NOFILE, static_cast<rlim_t>(number));
  }
  void LeaveMany() { m_limit.reset(); }
  // A program's segment. Its file has its name when Show is called.
  SegmentMap& Make() {
    SegmentMap& made = m_segments.emplace_back();
    EXPECT_TRUE(made.Create({16, 4096, 4096}, 1, 42, m_folder.NewFile(1, ++m_made)));
    return made;
  }
  void Show() { ASSERT_TRUE(m_folder.Show()); }
  void RunFor(std::chrono::milliseconds time, int free) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
      m_io.poll_one();
      Leave(free);
      usleep(200);
    }
  }
  bool Run(std::size_t instances) {
    return WaitFor([&] { return m_io.poll(), m_apps.Running() == instances; }, 5000);
  }

  const TempDir m_place;
  const std::string m_socket = m_place.File("quord.sock");
  asio::io_context m_io;
  Hub m_hub;
  Catalogue m_catalogue{nullptr, kDefaultSettings};
  Apps m_apps{m_io, m_catalogue, *this, "here"};
  std::list<SegmentMap> m_segments;

 private:
  Hub& HubForMachine(const std::string&, const Account&) override { return m_hub; }
  void OnPlaceChanged() override {}

  SegmentFolder m_folder;
  std::uint64_t m_made = 0;
  std::optional<SoftLimit> m_limit;
};

TEST_F(AppsShortageTest, WhereEvenTheFolderCannotBeListedNoSegmentIsForgotten) {
  Make();
  Leave(0);
  Show();
  RunFor(1500ms, 0);  // the next look at it finds no descriptor either
  EXPECT_EQ(m_apps.Running(), 0u);
  LeaveMany();
  EXPECT_TRUE(Run(1));
}

TEST_F(AppsShortageTest, ASegmentThatFoundNoRoomAtTheEndOfAnotherInstanceIsLookedAtAgain) {
  Make();
  Show();
  ASSERT_TRUE(Run(1));
  // The lock of the first one is looked at once a second, and the second one between two looks.
  EXPECT_FALSE(WaitFor([&] { return m_io.poll(), false; }, 400));
  Make();
  Leave(1);
  Show();
  RunFor(100ms, 1);
  EXPECT_EQ(m_apps.Running(), 1u);
  m_segments.pop_front();  // what it had is taken by others at once
  RunFor(2500ms, 1);
  EXPECT_EQ(m_apps.Running(), 0u);
  LeaveMany();
  EXPECT_TRUE(Run(1));
}

}  // namespace
