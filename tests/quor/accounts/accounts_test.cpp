// The names of accounts, where they stand in other texts, and what an account may have.
#include "quor/accounts/accounts.h"

#include <gtest/gtest.h>

#include <thread>

#include "quor/accounts/account_bound.h"

namespace {

TEST(Accounts, HaveTheNameThatTheSystemHasAndElseTheirNumber) {
  Accounts accounts(true);
  EXPECT_EQ(accounts.Of(0).name, "root");
  EXPECT_EQ(accounts.Of(0).uid, 0u);
  EXPECT_EQ(accounts.Of(4000000001).name, "4000000001");
  EXPECT_TRUE(accounts.IsName("root"));
  EXPECT_TRUE(accounts.IsName("65001"));
  EXPECT_FALSE(accounts.IsName("no such account"));
  EXPECT_FALSE(accounts.IsName("no-such-account"));
  EXPECT_FALSE(accounts.IsName(""));
}

TEST(Accounts, OfAServiceOfOneAccountHaveNoNames) {
  Accounts accounts(false);
  EXPECT_EQ(accounts.Of(0).name, "");
  EXPECT_FALSE(accounts.IsName("root"));
  EXPECT_EQ(KeyOf(accounts.Of(0), "a/b"), "a/b");
  EXPECT_EQ(PidText("worker 7", 4711, accounts.Of(0).name), "worker 7");
}

TEST(Accounts, AKeyIsDividedAtItsFirstSlash) {
  EXPECT_EQ(KeyOf({7, "alice"}, "bob/shop"), "alice/bob/shop");
  EXPECT_EQ(AccountIn("alice/bob/shop"), "alice");
  EXPECT_EQ(AppIn("alice/bob/shop"), "bob/shop");
  EXPECT_EQ(AppIn("shop"), "");
}

TEST(Accounts, AProcessIsANumberAndItsAccountWhateverTheProgramWrites) {
  EXPECT_EQ(PidText("7", 4711, "alice"), "7 alice") << "its number in its own name space";
  for (const char* const said : {"", "7 bob", "bob", "7_bob", "-7", "7\n", "12345678901"})
    EXPECT_EQ(PidText(said, 4711, "alice"), "4711 alice") << said;
}

TEST(Accounts, ANameThatTheSystemCannotTellIsAskedForAgainAfterAWhile) {
  int asked = 0;
  bool fails = true;
  Accounts accounts(
      true, [&](uid_t) { return ++asked, std::string(fails ? "" : "alice"); },
      std::chrono::milliseconds(200));
  EXPECT_EQ(accounts.Of(7).name, "7");
  EXPECT_EQ(accounts.Of(7).name, "7");
  EXPECT_EQ(asked, 1);
  fails = false;
  std::this_thread::sleep_for(std::chrono::milliseconds(250));
  EXPECT_EQ(accounts.Of(7).name, "alice");
  EXPECT_EQ(accounts.Of(8).name, "8") << "another account has that name";
  std::this_thread::sleep_for(std::chrono::milliseconds(250));
  EXPECT_EQ(accounts.Of(7).name, "alice");
  EXPECT_EQ(accounts.Of(8).name, "8");
  EXPECT_EQ(asked, 3);
}

TEST(Accounts, ABoundIsOfEachAccountAndAServiceOfOneAccountHasNone) {
  AccountBound bound("clients", 2);
  const Account alice{1, "alice"}, bob{2, "bob"}, only{};
  EXPECT_TRUE(bound.Take(alice) && bound.Take(alice));
  EXPECT_FALSE(bound.Take(alice));
  EXPECT_TRUE(bound.Take(bob));
  EXPECT_EQ(bound.Refused(), 1u);
  bound.Give(alice);
  EXPECT_TRUE(bound.Take(alice));
  EXPECT_FALSE(bound.Take(alice));
  EXPECT_EQ(bound.Why(), "an account has at most 2 clients");
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(bound.Take(only));
  EXPECT_EQ(bound.Refused(), 2u);
}

}  // namespace
