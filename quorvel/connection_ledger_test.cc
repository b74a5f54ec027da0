// ConnectionLedger: which origin a URL talks to, and when a connection to it
// stands idle.
#include "quorvel/connection_ledger.h"

#include <gtest/gtest.h>

namespace quorvel {
namespace {

TEST(ConnectionLedgerTest, OriginIsSchemeAndAuthority) {
  struct Case {
    const char* url;
    const char* origin;
  };
  const Case cases[] = {
      {"http://127.0.0.1:8080/api/v2/x.json?a=1", "http://127.0.0.1:8080"},
      {"https://example.com", "https://example.com"},
      {"https://example.com?q=1", "https://example.com"},
      {"https://example.com#top", "https://example.com"},
      {"https://user:pw@example.com:443/p", "https://user:pw@example.com:443"},
      {"http://[::1]:9/p", "http://[::1]:9"},
      {"not a url", "not a url"},
  };
  for (const auto& c : cases) EXPECT_EQ(ConnectionLedger::originOf(c.url), c.origin) << c.url;
}

TEST(ConnectionLedgerTest, AConnectionIsIdleWhenItsOriginHasMoreSocketsThanTransfers) {
  ConnectionLedger ledger;
  const std::string a = "http://a:1";
  const std::string b = "http://b:1";
  EXPECT_FALSE(ledger.hasIdleConnection(a));

  ledger.transferStarted(a);
  ledger.socketOpened(7, a);
  EXPECT_FALSE(ledger.hasIdleConnection(a)) << "its only connection is in use";
  ledger.transferFinished(a);
  EXPECT_TRUE(ledger.hasIdleConnection(a));
  EXPECT_FALSE(ledger.hasIdleConnection(b)) << "an idle connection serves its own origin only";

  ledger.transferStarted(a);
  ledger.transferStarted(a);  // a second transfer needs a second connection
  ledger.socketOpened(8, a);
  ledger.transferFinished(a);
  EXPECT_TRUE(ledger.hasIdleConnection(a));

  ledger.socketClosed(7);
  ledger.socketClosed(7);  // reported twice: counted once
  EXPECT_FALSE(ledger.hasIdleConnection(a));
  ledger.transferFinished(a);
  EXPECT_TRUE(ledger.hasIdleConnection(a));
  ledger.socketClosed(8);
  EXPECT_FALSE(ledger.hasIdleConnection(a));
  EXPECT_EQ(ledger.openSockets(), 0U);
}

TEST(ConnectionLedgerTest, ASocketNumberReusedForAnotherOriginMovesThere) {
  ConnectionLedger ledger;
  ledger.socketOpened(5, "http://a:1");
  ledger.socketOpened(5, "http://b:1");  // its close was never reported
  EXPECT_FALSE(ledger.hasIdleConnection("http://a:1"));
  EXPECT_TRUE(ledger.hasIdleConnection("http://b:1"));
  EXPECT_EQ(ledger.openSockets(), 1U);
}

}  // namespace
}  // namespace quorvel
