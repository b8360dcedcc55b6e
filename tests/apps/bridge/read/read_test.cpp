// Monitors of what a real server stores: in order, whole, and what is missing told in its place.
#include "apps/bridge/read/read_fixture.h"

namespace {

TEST_F(BridgeRead, TailPrintsWhatWasStoredInTheOrderOfEachSource) {
  SentSource orders("web1", "orders"), billing("web2", "billing");
  for (int i = 0; i < 20; ++i) {
    Send(orders.Next(3));
    Send(billing.Next(2));
  }
  const TrcRun run = TrcProcess(Tail("since=start&app=orders", {"--count", "60"})).Finish();
  EXPECT_EQ(run.out, Lines("orders", 0, 60)) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  const TrcRun other = TrcProcess(Tail("since=start&machine=web2", {"--count", "40"})).Finish();
  EXPECT_EQ(other.out, Lines("billing", 0, 40)) << other.err;
  const TrcRun both = TrcProcess(Tail("since=start", {"--count", "100"})).Finish();
  EXPECT_EQ(std::count(both.out.begin(), both.out.end(), '\n'), 101) << both.err;
}

TEST_F(BridgeRead, TailFollowsWhatComes) {
  SentSource orders("web1", "orders");
  Send(orders.Next(5));
  TrcProcess tail(Tail("machine=web1"));
  // It is there once the silence is told.
  tail.ReadErrUntil("no traces come");
  Send(orders.Next(5));
  const std::string title = "Trace\n";
  tail.ReadOut(title.size() + Lines("orders", 5, 10).size());
  Send(orders.Next(5));
  const std::string wanted = title + Lines("orders", 5, 15);
  EXPECT_EQ(tail.ReadOut(wanted.size()), wanted);
  tail.Interrupt();
  EXPECT_EQ(tail.Finish().status, 0);
}

TEST_F(BridgeRead, ALossIsToldInItsPlaceAlsoThatOfTheLastTraces) {
  SentSource orders("web1", "orders"), billing("web2", "billing");
  Send(orders.Next(2));
  orders.Next(3);  // it is never stored
  Send(orders.Next(2));
  Send(orders.Next(1, 4));
  Send(billing.Next(3));
  billing.Next(6);
  Send(billing.Word());
  TrcProcess tail(Tail("since=start&machine=web1"));
  TrcProcess last(Tail("since=start&machine=web2&app=billing"));
  const std::string wanted =
      Lines("orders", 0, 2) + "3 traces lost: not in the stream\n" + Lines("orders", 5, 7) +
      "4 traces lost: they were lost before they could be stored\n" + Lines("orders", 11, 12);
  EXPECT_EQ(tail.ReadOut(wanted.size()), wanted);
  const std::string ofLast = Lines("billing", 0, 3) + "6 traces lost: not in the stream\n";
  EXPECT_EQ(last.ReadOut(ofLast.size()), ofLast);
  tail.Interrupt();
  const TrcRun run = tail.Finish();
  EXPECT_EQ(run.err, "trc: 7 traces lost\n");
  EXPECT_EQ(run.status, 1);
}

TEST_F(BridgeRead, WhatComesTwiceIsPrintedOnce) {
  SentSource orders("web1", "orders");
  const Envelope first = orders.Next(4), second = orders.Next(4);
  for (const Envelope* const envelope : {&first, &first, &second, &first}) Send(*envelope);
  Send(orders.Next(1));
  TrcProcess tail(Tail("since=start"));
  EXPECT_EQ(tail.ReadOut(Lines("orders", 0, 9).size()), Lines("orders", 0, 9));
  usleep(1'500'000);  // counts come each second
  tail.Interrupt();
  const TrcRun run = tail.Finish();
  EXPECT_EQ(run.err, "trc: 8 came twice, 0 came late\n");
  EXPECT_EQ(run.status, 0);
}

TEST_F(BridgeRead, AReaderThatIsKilledLosesAndRepeatsNothing) {
  SentSource orders("web1", "orders"), billing("web1", "billing");
  Send(orders.Next(50));
  Send(billing.Next(50));
  TrcProcess tail(Tail("since=start", {"--where", "application == orders"}));
  tail.ReadOut(Lines("orders", 0, 50).size());
  for (int round = 0; round < 3; ++round) {
    const pid_t reader = ReaderOf(tail.Id());
    ASSERT_GT(reader, 0) << tail.Finish().err;
    kill(reader, SIGKILL);
    Send(orders.Next(50));
    Send(billing.Next(50));
    const std::string wanted = Lines("orders", 0, orders.Serial());
    ASSERT_EQ(tail.ReadOut(wanted.size()), wanted);
  }
  tail.Interrupt();
  const TrcRun run = tail.Finish();
  EXPECT_EQ(run.out, Lines("orders", 0, orders.Serial()));
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST_F(BridgeRead, AServerThatIsKilledAndComesAgainLosesNothing) {
  SentSource orders("web1", "orders");
  Send(orders.Next(50));
  TrcProcess tail(Tail("since=start&app=orders"));
  tail.ReadOut(Lines("orders", 0, 50).size());
  m_server.Kill();
  ASSERT_EQ(m_server.Start(), "");
  Send(orders.Next(50));
  EXPECT_EQ(tail.ReadOut(Lines("orders", 0, 100).size()), Lines("orders", 0, 100));
  tail.Interrupt();
  const TrcRun run = tail.Finish();
  EXPECT_EQ(run.status, 0) << run.err;
}

TEST_F(BridgeRead, AMonitorThatStandsStillLosesOnlyWhatIsTrimmedMeanwhile) {
  MakeStream(10);  // messages of a subject
  SentSource orders("web1", "orders");
  for (int i = 0; i < 4; ++i) Send(orders.Next(10));
  TrcProcess tail(Tail("since=start"));
  tail.ReadOut(Lines("orders", 0, 40).size());
  tail.Signal(SIGSTOP);
  const pid_t reader = ReaderOf(tail.Id());
  ASSERT_GT(reader, 0);
  kill(reader, SIGSTOP);
  // More than the reader had asked for.
  for (int i = 0; i < 1500; ++i) Send(orders.Next(10));
  kill(reader, SIGCONT);
  tail.Signal(SIGCONT);
  const std::string end = Lines("orders", 15030, 15040);
  std::string out = tail.ReadOut(Lines("orders", 0, 40).size() + 1);
  while (!out.ends_with(end) && out.size() < 1'000'000) out = tail.ReadOut(out.size() + 1);
  tail.Interrupt();
  const TrcRun run = tail.Finish();
  // Each trace stands there, or is counted in a line between its neighbours.
  std::istringstream lines(run.out);
  std::uint64_t serial = 0, lost = 0;
  std::string line;
  std::getline(lines, line);  // the title
  while (std::getline(lines, line)) {
    if (line.starts_with("orders ")) {
      ASSERT_EQ(line, "orders " + std::to_string(++serial));
      continue;
    }
    const std::uint64_t here = std::stoull(line);
    ASSERT_EQ(line, std::to_string(here) + " traces lost: not in the stream");
    serial += here;
    lost += here;
  }
  EXPECT_EQ(serial, 15'040u);
  EXPECT_GT(lost, 0u);
  EXPECT_EQ(run.err, "trc: " + std::to_string(lost) + " traces lost\n");
  EXPECT_EQ(run.status, 1);
}

TEST_F(BridgeRead, CaptureCountsThem) {
  SentSource orders("web1", "orders");
  for (int i = 0; i < 10; ++i) Send(orders.Next(100));
  const std::string file = m_folder.Path() + "/now.trc";
  const TrcRun run = TrcProcess({{"capture", Text(), "-o", file, "--count", "1000"}}).Finish();
  EXPECT_EQ(run.out, "1000 taken, 0 lost\n") << run.err;
  EXPECT_EQ(run.status, 0);
}

TEST_F(BridgeRead, WhatIsWrongIsSaidInWords) {
  const auto why = [](const std::string& address) {
    const TrcRun run = TrcProcess({{"tail", address, "--count", "1"}}).Finish();
    EXPECT_EQ(run.status, 2) << run.out;
    return run.err;
  };
  const std::string server = "nats://" + m_server.Address();
  EXPECT_EQ(why(server + "/NONE"),
            "trc: " + server + "/NONE refuses: the engine says: stream not found\n");
  EXPECT_EQ(why(server),
            "trc: \"" + server + "\" names no stream: write it behind the servers, as /QUOR1\n");
  EXPECT_NE(why("nats://127.0.0.1:1/S").find("the engine is not reached"), std::string::npos);
}

}  // namespace
