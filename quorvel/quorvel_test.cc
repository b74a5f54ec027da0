#include "quorvel/quorvel.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "quorvel/anonymous_identity.h"
#include "quorvel/core_fixture_test.h"

namespace quorvel::testing {
namespace {

class QuorvelTest : public CoreTest {
 protected:
  LoopbackServer server_;
};

TEST_F(QuorvelTest, InitializeMakesTheInstanceAndSendsNothing) {
  EXPECT_FALSE(Quorvel::instance());
  EXPECT_FALSE(QVKClassicQuorvel::instance());
  start(server_.url() + "/");
  EXPECT_EQ(Quorvel::instance(), quorvel_);
  EXPECT_EQ(QVKClassicQuorvel::instance(), quorvel_);
  EXPECT_EQ(quorvel_->quorvelUrl(), server_.url()) << "without the trailing slash";
  EXPECT_FALSE(quorvel_->identity());
  loop_->runFor(std::chrono::milliseconds(100));
  EXPECT_TRUE(server_.seen().empty());

  // The last one made wins.
  const auto first = quorvel_;
  start(server_.url());
  EXPECT_EQ(Quorvel::instance(), quorvel_);
  EXPECT_NE(Quorvel::instance(), first);
}

TEST_F(QuorvelTest, TheAnonymousGuidIsMadeOnceAndSurvivesClearingTheSession) {
  start(server_.url());
  quorvel_->setIdentity(std::make_shared<AnonymousIdentity>("Ada", "ada@example.com"));
  const auto identity = std::dynamic_pointer_cast<const AnonymousIdentity>(quorvel_->identity());
  ASSERT_TRUE(identity);
  const std::string guid = identity->guid();
  EXPECT_EQ(guid.size(), 36u);

  auto& store = *quorvel_->storeModule().sessionStore;
  store.store("t", "quorvel.core.access_token");
  store.store("{}", "quorvel.core.settings");
  quorvel_->storeModule().clearSettingsAndSession();
  EXPECT_FALSE(store.value("quorvel.core.access_token"));
  EXPECT_FALSE(store.value("quorvel.core.settings"));

  start(server_.url());
  quorvel_->setIdentity(std::make_shared<AnonymousIdentity>());
  EXPECT_EQ(std::dynamic_pointer_cast<const AnonymousIdentity>(quorvel_->identity())->guid(), guid);
}

// Parents included: a world-writable parent would let anyone swap the folder.
TEST_F(QuorvelTest, EveryFolderItMakesIsTheOwnersOnlyWhateverTheUmask) {
  const auto nested = dataDirectory_ / "x" / "sub" / "dir";
  auto opts = options();
  opts.dataDirectory = nested;
  const mode_t saved = ::umask(0);
  quorvel_ = Quorvel::initialize("test-app", server_.url(), "client-7", opts);
  ::umask(saved);
  for (auto folder = nested; folder != dataDirectory_; folder = folder.parent_path()) {
    struct stat info {};
    ASSERT_EQ(::stat(folder.c_str(), &info), 0) << folder;
    EXPECT_EQ(info.st_mode & 07777, 0700u) << folder;
  }
}

TEST(QuorvelDataDirectoryTest, DefaultsToAPerUserFolderForTheApp) {
  const char* saved = std::getenv("XDG_DATA_HOME");
  const std::string previous = saved != nullptr ? saved : "";
  ::setenv("XDG_DATA_HOME", "/tmp/xdg-test", 1);
  EXPECT_EQ(Quorvel::defaultDataDirectory("app/../1"), "/tmp/xdg-test/quorvel/app_.._1");
  ::unsetenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  if (home != nullptr) {
    EXPECT_EQ(Quorvel::defaultDataDirectory("a1"),
              std::filesystem::path(home) / ".local/share/quorvel/a1");
  }
  if (saved != nullptr) ::setenv("XDG_DATA_HOME", previous.c_str(), 1);
}

}  // namespace
}  // namespace quorvel::testing
