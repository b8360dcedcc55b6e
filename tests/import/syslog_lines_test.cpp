#include "import/lines/syslog_lines.h"

#include <gtest/gtest.h>

#include "import/lines/journal_lines.h"
#include "shown_import.h"

namespace {

constexpr std::int64_t kSyslogEnd = 1795305600;  // 2026-11-22 00:00:00 UTC

class ImportSyslog : public testing::Test {
 protected:
  ImportSyslog() { m_clock.SetLatest(kSyslogEnd); }
  std::string Read(std::string_view line) { return ReadOf(m_lines, line); }

  ImportClock m_clock{{.zone = ImportZone(0), .format = {}}};
  ImportFields m_fields{{}, m_clock};
  SyslogLines m_lines{m_fields, m_clock};
};

TEST_F(ImportSyslog, ReadsTheFileOfADaemonWithBothKindsOfTimes) {
  EXPECT_EQ(Read("Nov 21 09:41:07 web cron[42]: (root) CMD (true)"),
            "2026-11-21 09:41:07.000 [Info] machine=web app=cron component=syslog pid=42 "
            "'(root) CMD (true)'");
  EXPECT_EQ(Read("2026-11-21T10:41:07.123456+01:00 web kernel: [    0.5] hello"),
            "2026-11-21 09:41:07.123 [Info] machine=web app=kernel component=syslog "
            "'[    0.5] hello'");
  EXPECT_EQ(Read("Nov  1 09:41:07 web a/b.c-d: x"),
            "2026-11-01 09:41:07.000 [Info] machine=web app=a/b.c-d component=syslog 'x'");
}

TEST_F(ImportSyslog, ReadsRfc3164WithItsPriority) {
  EXPECT_EQ(Read("<34>Oct 11 22:14:15 mymachine su: 'su root' failed for lonvick"),
            "2026-10-11 22:14:15.000 [Error] machine=mymachine app=su component=auth "
            "''su root' failed for lonvick'");
  EXPECT_EQ(Read("<0>Nov 21 09:41:07 tag[1]: no host"),
            "2026-11-21 09:41:07.000 [Error] app=tag component=kern pid=1 'no host'");
  EXPECT_EQ(Read("<191>Nov 21 09:41:07 web x: y").substr(24),
            "[Info, Developer] machine=web app=x component=local7 'y'");
}

TEST_F(ImportSyslog, ReadsRfc5424) {
  EXPECT_EQ(Read("<165>1 2003-10-11T22:14:15.003Z host evntslog 12 ID47 "
                 "[a@1 iut=\"3\" s=\"x]\\\"y\"][b] \xEF\xBB\xBFtext here"),
            "2003-10-11 22:14:15.003 [Info] machine=host app=evntslog component=local4 "
            "category=ID47 pid=12 'text here [a@1 iut=\"3\" s=\"x]\\\"y\"][b]'");
  EXPECT_EQ(Read("<14>1 - - - - - - only text"), "no time [Info] component=user 'only text'");
  EXPECT_EQ(Read("<12>1 2026-11-21T09:41:07Z h a - - -"),
            "2026-11-21 09:41:07.000 [Warn] machine=h app=a component=user ''");
  EXPECT_EQ(Read("1 2026-11-21T09:41:07Z h a - - [x] t").substr(24),
            "[Info] machine=h app=a component=syslog 't [x]'");
}

TEST_F(ImportSyslog, ATextWithoutATagIsAllText) {
  EXPECT_EQ(Read("Nov 21 09:41:07 web last message repeated 3 times"),
            "2026-11-21 09:41:07.000 [Info] machine=web component=syslog "
            "'last message repeated 3 times'");
  EXPECT_EQ(Read("Nov 21 09:41:07 web cron[42]:"),
            "2026-11-21 09:41:07.000 [Info] machine=web app=cron component=syslog pid=42 ''");
}

TEST_F(ImportSyslog, AnythingElseIsNotUnderstood) {
  for (const char* line :
       {"", "hello", "<34>", "<192>Nov 21 09:41:07 h t: x", "<1234>Nov 21 09:41:07 h t: x",
        "<x>Nov 21 09:41:07 h t: x", "<34Nov 21 09:41:07 h t: x", "Nov 21 09:41:07",
        "Nov 21 09:41 h t: x", "Nov 32 09:41:07 h t: x", "2026-11-21T09:41:07Zx h t: x",
        "<14>1 2026-11-21T09:41:07Z h a - -", "<14>1 soon h a - - - x",
        "<14>1 2026-11-21T09:41:07Z h a - - [x", "<14>1 2026-11-21T09:41:07Z h a - - [x=\"] t"})
    EXPECT_EQ(Read(line), "not understood") << line;
}

class ImportJournal : public testing::Test {
 protected:
  std::string Read(std::string_view line) { return ReadOf(m_lines, line); }

  ImportClock m_clock{{.zone = ImportZone(0), .format = {}}};
  ImportFields m_fields{{}, m_clock};
  JournalLines m_lines{m_fields};
};

TEST_F(ImportJournal, ReadsWhatTheJournalKnowsOfAMessage) {
  EXPECT_EQ(Read(R"({"__REALTIME_TIMESTAMP":"1795254067123456","_HOSTNAME":"web","PRIORITY":"4",)"
                 R"("SYSLOG_IDENTIFIER":"sshd","_COMM":"sshd2","_PID":"42","SYSLOG_PID":"41",)"
                 R"("_SYSTEMD_UNIT":"ssh.service","SYSLOG_FACILITY":"10","MESSAGE":"hi",)"
                 R"("_BOOT_ID":"0"})"),
            "2026-11-21 09:41:07.123 [Warn] machine=web app=sshd component=ssh.service "
            "category=authpriv pid=42 'hi'");
}

TEST_F(ImportJournal, ReadsLoggerThreadAndPlaceInTheSource) {
  EXPECT_EQ(Read(R"({"__REALTIME_TIMESTAMP":"1795254067123456","_SOURCE_REALTIME_TIMESTAMP":)"
                 R"("1795254066000000","_COMM":"shop","LOGGER":"db.pool","THREAD_NAME":"worker",)"
                 R"("TID":"7","CODE_FILE":"a.c","CODE_LINE":"12","MESSAGE":"m","PRIORITY":"7"})"),
            "2026-11-21 09:41:06.000 [Info, Developer] app=shop component=db category=pool "
            "tid=worker file=a.c line=12 'm'");
}

TEST_F(ImportJournal, ReadsBytesAndSeveralValues) {
  EXPECT_EQ(Read(R"({"__REALTIME_TIMESTAMP":"1795254067123456","MESSAGE":[104,105,255]})"),
            "2026-11-21 09:41:07.123 [Info] 'hi\xFF'");
  EXPECT_EQ(Read(R"({"__REALTIME_TIMESTAMP":"1795254067123456","MESSAGE":["one","two"]})"),
            "2026-11-21 09:41:07.123 [Info] 'one\ntwo'");
  EXPECT_EQ(Read(R"({"__REALTIME_TIMESTAMP":"1795254067123456","MESSAGE":[[104,105],[255]]})"),
            "2026-11-21 09:41:07.123 [Info] 'hi\n\xFF'");
}

TEST_F(ImportJournal, AValueThatIsNoneLeavesTheFieldToTheNext) {
  EXPECT_EQ(Read(R"({"_SOURCE_REALTIME_TIMESTAMP":"?","__REALTIME_TIMESTAMP":"1795254067123456",)"
                 R"("_TRANSPORT":"syslog","SYSLOG_FACILITY":"99999999999","MESSAGE":"m"})"),
            "2026-11-21 09:41:07.123 [Info] component=syslog 'm'");
}

TEST_F(ImportJournal, ATextThatJournalctlLeftOutIsCounted) {
  EXPECT_EQ(Read(R"({"__REALTIME_TIMESTAMP":"1795254067123456","MESSAGE":null})"),
            "2026-11-21 09:41:07.123 [Info] ''");
  EXPECT_EQ(
      m_lines.Notes(),
      std::vector<std::string>{"1 text is missing: journalctl leaves out long ones without --all"});
}

TEST_F(ImportJournal, AnEntryWithoutATimeOrThatIsNoObjectIsNotUnderstood) {
  for (const char* line : {"", "-- No entries --", "{}", R"({"MESSAGE":"m"})",
                           R"({"__REALTIME_TIMESTAMP":"soon","MESSAGE":"m"})"})
    EXPECT_EQ(Read(line), "not understood") << line;
}

}  // namespace
