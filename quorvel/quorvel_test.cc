#include "quorvel/quorvel.h"

#include <cstdlib>
#include <fstream>
#include <mutex>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "quorvel/anonymous_identity.h"
#include "quorvel/blips_provider.h"
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

struct DamageCase {
  const char* file;
};

// 8 KB of garbage past the first page: the file still opens, and the damage
// shows on the first statement that reads a table.
class QuorvelDamagedStoreTest : public QuorvelTest,
                                public ::testing::WithParamInterface<DamageCase> {
 protected:
  QuorvelOptions options() override {
    auto opts = QuorvelTest::options();
    opts.logLevel = LogLevel::error;
    // Stores log from whichever thread meets the damage.
    opts.logSink = [this](LogLevel, std::string_view line) {
      std::lock_guard lock(mutex_);
      if (line.find("moved it aside") != std::string_view::npos) ++movedAside_;
    };
    return opts;
  }

  std::string anonymousGuid() {
    quorvel_->setIdentity(std::make_shared<AnonymousIdentity>());
    return std::dynamic_pointer_cast<const AnonymousIdentity>(quorvel_->identity())->guid();
  }

  void damage(const std::filesystem::path& file) {
    quorvel_->shutdown();
    quorvel_.reset();
    Quorvel::resetForTesting();  // closes every store
    std::fstream out(file, std::ios::in | std::ios::out | std::ios::binary);
    ASSERT_TRUE(out);
    out.seekp(4096);
    out << std::string(8192, 'g');
  }

  int asides() const {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dataDirectory_)) {
      const auto name = entry.path().filename().string();
      const bool side = name.ends_with("-wal") || name.ends_with("-shm");
      count += name.starts_with(std::string(GetParam().file) + ".corrupt-") && !side ? 1 : 0;
    }
    return count;
  }

  std::mutex mutex_;
  int movedAside_ = 0;
};

TEST_P(QuorvelDamagedStoreTest, IsMovedAsideAndTheAnonymousUserKeepsTheirGuid) {
  start(server_.url());
  const auto guid = anonymousGuid();
  damage(dataDirectory_ / GetParam().file);

  start(server_.url());
  // The statement that meets the damage fails; the next one runs on the fresh file.
  quorvel_->providerModule().blip->pendingCount();
  EXPECT_EQ(quorvel_->providerModule().blip->pendingCount(), 0u);
  EXPECT_EQ(anonymousGuid(), guid);
  EXPECT_EQ(asides(), 1);
  std::lock_guard lock(mutex_);
  EXPECT_EQ(movedAside_, 1);
}

INSTANTIATE_TEST_SUITE_P(Stores, QuorvelDamagedStoreTest,
                         ::testing::Values(DamageCase{"session.sqlite"},
                                           DamageCase{"blips.sqlite"}),
                         [](const auto& param) {
                           std::string name = param.param.file;
                           return name.substr(0, name.find('.'));
                         });

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
