// The subjects of the relay's messages.
#include <gtest/gtest.h>

#include "quor/envelope/envelope.h"

namespace {

TEST(EnvelopeSubjects, EveryNameComesBackOutOfItsSubject) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
  for (const std::string& name : {std::string("orders"), std::string(), std::string("_"),
                                  std::string("a.b c>*"), std::string("=5F"), std::string("==")}) {
    std::string machine, app;
    bool word = true;
    ASSERT_TRUE(ReadSubject(EnvelopeSubject(name, name), machine, app, word)) << name;
    EXPECT_EQ(machine, name);
    EXPECT_EQ(app, name);
    EXPECT_FALSE(word);
    ASSERT_TRUE(ReadSubject(WordSubject(name), machine, app, word)) << name;
    EXPECT_EQ(machine, name);
    EXPECT_TRUE(word);
  }
  for (const char byte : all) {
    std::string machine, app;
    bool word = true;
    const std::string name(1, byte);
    ASSERT_TRUE(ReadSubject(EnvelopeSubject("m", name), machine, app, word));
    EXPECT_EQ(app, name);
    EXPECT_FALSE(word) << "the word's subject is no application's";
  }
}

TEST(EnvelopeSubjects, LongNamesStayApartAndShort) {
  const std::string one(4096, '.'), two = one + ".";
  EXPECT_NE(SubjectToken(one), SubjectToken(two));
  EXPECT_LE(SubjectToken(one).size(), 255u);
  std::string machine, app;
  bool word = true;
  ASSERT_TRUE(ReadSubject(EnvelopeSubject(one, "a"), machine, app, word));
  EXPECT_EQ(one.find(machine), 0u);
  EXPECT_FALSE(machine.empty());
}

TEST(EnvelopeSubjects, NoUserWaitsForAnswersWhereAnotherOneDoes) {
  EXPECT_EQ(UserInbox("bob@monitor.quor"), "_INBOX_bob=40monitor=2Equor");
  EXPECT_EQ(UserInbox("*.>@monitor.quor").find_first_of("*.> "), std::string::npos);
  EXPECT_NE(UserInbox("bob@monitor.quor"), UserInbox("bob=40monitor@quor"));
  EXPECT_NE(UserInbox("bob@monitor.quor"), UserInbox("bob@forward.quor"));
}

TEST(EnvelopeSubjects, WhatNoNameGivesIsRefused) {
  std::string machine, app;
  bool word = false;
  for (const std::string subject :
       {"", "quor1", "quor1.m", "quor1.m.", "quor1..a", "quor2.m.a", "quor1.m.a.b", "quor1.m.=4",
        "quor1.m.=zz", "quor1.m.=5f", "quor1.m.=41", "quor1.m.*", "quor1._.a", "quor1.m.a==00",
        "quor1.m.=="})
    EXPECT_FALSE(ReadSubject(subject, machine, app, word)) << subject;
}

}  // namespace
