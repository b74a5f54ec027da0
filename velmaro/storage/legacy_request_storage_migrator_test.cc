// Moving the old user-defaults keys into the request store.
#include "velmaro/storage/legacy_request_storage_migrator.h"

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "quorvel/platform/user_defaults.h"
#include "velmaro/storage/session_store_backend.h"

namespace velmaro {
namespace {

namespace fs = std::filesystem;
using Migrator = LegacyRequestStorageMigrator;

struct MigrationCase {
  const char* label;
  const char* ids;     // JSON under "qvk_request-ids"; empty: none
  const char* counts;  // JSON under "QVKRequestCommentCountKey"; empty: none
  bool storeWorks;
  std::vector<RequestForStorage> stored;  // nothing stored when empty and not migrated
  std::vector<std::string> log;           // the lines logged, in order
};

// The store's dictionary writes fail, as a full disk makes them.
class RefusingBackend : public RequestStorageProtocol {
 public:
  bool store(const boost::json::value&, std::string_view) override { return true; }
  std::optional<boost::json::value> value(std::string_view) override { return std::nullopt; }
  bool update(std::string_view, const Change&) override { return false; }
};

class MigrationTest : public testing::TestWithParam<MigrationCase> {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("migration-" + std::to_string(std::random_device{}()));
    defaults_ = std::make_shared<quorvel::platform::UserDefaults>(dir_ / "defaults.sqlite");
    session_ = std::make_shared<quorvel::SessionStore>(dir_ / "session.sqlite");
    quorvel::CoreLogger::setSink(
        [this](quorvel::LogLevel, std::string_view line) { log_.emplace_back(line); });
  }
  void TearDown() override {
    quorvel::CoreLogger::resetForTesting();
    fs::remove_all(dir_);
  }

  fs::path dir_;
  std::shared_ptr<quorvel::platform::UserDefaults> defaults_;
  std::shared_ptr<quorvel::SessionStore> session_;
  std::vector<std::string> log_;
};

TEST_P(MigrationTest, MovesOldDataOnceOrLeavesIt) {
  const auto& c = GetParam();
  if (*c.ids != '\0') defaults_->set(Migrator::kRequestStorageId, boost::json::parse(c.ids));
  if (*c.counts != '\0') defaults_->set(Migrator::kCommentCountKey, boost::json::parse(c.counts));
  std::shared_ptr<RequestStorageProtocol> backend = std::make_shared<SessionStoreBackend>(session_);
  if (!c.storeWorks) backend = std::make_shared<RefusingBackend>();
  RequestStorage storage(backend);

  Migrator(storage, defaults_).checkAndMigrateOldTicketIds();

  EXPECT_EQ(log_, c.log);
  EXPECT_EQ(storage.getRequests(), c.stored);
  const bool migrated = c.storeWorks && !c.log.empty();
  EXPECT_EQ(defaults_->value(Migrator::kRequestStorageId).has_value(), !migrated && *c.ids != '\0');
  EXPECT_EQ(defaults_->value(Migrator::kCommentCountKey).has_value(),
            !migrated && *c.counts != '\0');
}

const std::vector<std::string> kMigrated = {Migrator::kMigratedMessage, Migrator::kDeletedMessage};

INSTANTIATE_TEST_SUITE_P(
    OldData, MigrationTest,
    testing::Values(
        MigrationCase{"idsAndCounts",
                      R"(["1", "2"])",
                      R"({"1": 4})",
                      true,
                      {RequestForStorage("1", 4, 0), RequestForStorage("2", 0, 0)},
                      kMigrated},
        MigrationCase{"emptyIdsStillStore", "[]", "{}", true, {}, kMigrated},
        MigrationCase{"nothingOld", "", "", true, {}, {}},
        MigrationCase{"noCounts", R"(["1"])", "", true, {}, {}},
        MigrationCase{"idThatIsANumber", R"(["1", 2])", R"({"1": 4})", true, {}, {}},
        MigrationCase{"countThatIsText", R"(["1"])", R"({"1": "4"})", true, {}, {}},
        MigrationCase{
            "storeFails", R"(["1"])", R"({"1": 4})", false, {}, {Migrator::kFailedMessage}}),
    [](const auto& param) { return std::string(param.param.label); });

}  // namespace
}  // namespace velmaro
