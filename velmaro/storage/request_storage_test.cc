// The request store over a real session store file: its algorithms, its
// stamp, and what callers rely on when writes fail.
#include "velmaro/storage/request_storage.h"

#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/storage/session_store_backend.h"

namespace velmaro {
namespace {

namespace fs = std::filesystem;
constexpr double kNow = 1'700'000'000.0;

class RequestStorageTest : public testing::Test {
 protected:
  void SetUp() override {
    dir_ =
        fs::temp_directory_path() / ("request-storage-" + std::to_string(std::random_device{}()));
    session_ = std::make_shared<quorvel::SessionStore>(dir_ / "session.sqlite");
    quorvel::CoreLogger::setLevel(quorvel::LogLevel::debug);
    quorvel::CoreLogger::setSink(
        [this](quorvel::LogLevel, std::string_view line) { log_.emplace_back(line); });
  }
  void TearDown() override {
    quorvel::CoreLogger::resetForTesting();
    fs::remove_all(dir_);
  }

  RequestStorage storage() {
    return RequestStorage(std::make_shared<SessionStoreBackend>(session_), [this] { return now_; });
  }
  void put(const char* key, std::string_view json) {
    session_->store(boost::json::parse(json), key);
  }

  fs::path dir_;
  std::shared_ptr<quorvel::SessionStore> session_;
  double now_ = kNow;
  std::vector<std::string> log_;
};

TEST_F(RequestStorageTest, FreshInstallHasNothingAndIsExpired) {
  auto store = storage();
  EXPECT_TRUE(store.getRequestIds().empty());
  EXPECT_TRUE(store.getRequests().empty());
  EXPECT_FALSE(store.getRequestForId("1"));
  EXPECT_TRUE(store.isRequestCacheExpired());
  EXPECT_TRUE(log_.empty());
}

TEST_F(RequestStorageTest, StoringMergesAndStampsTheExpiryMoment) {
  put(RequestStorage::kRequestStorageKey,
      R"({"b": {"comment_count": 2, "read_comment_count": 2}})");
  auto store = storage();
  ASSERT_TRUE(store.storeRequestsAndResetCacheTime(
      {RequestForStorage("a", 3, 1), RequestForStorage("b", 5, 2), RequestForStorage("a", 4, 1)}));
  EXPECT_EQ(boost::json::serialize(*session_->value(RequestStorage::kRequestStorageKey)),
            R"({"b":{"comment_count":5,"read_comment_count":2},)"
            R"("a":{"comment_count":4,"read_comment_count":1}})");
  EXPECT_EQ(session_->value(RequestStorage::kCacheTimestampKey), boost::json::value(kNow + 3600));
  EXPECT_EQ(store.getRequestIds(), (std::vector<std::string>{"b", "a"}));
}

// A fetched list's counters: the stored read counter survives where there is
// a record for the id (a malformed entry is none), both rows of an id listed
// twice read what was stored before the list, and the stamp is set.
TEST_F(RequestStorageTest, StoringAListKeepsTheStoredReadCounters) {
  put(RequestStorage::kRequestStorageKey,
      R"({"kept": {"comment_count": 2, "read_comment_count": 2},)"
      R"( "odd": {"comment_count": "2", "read_comment_count": 2}})");
  auto store = storage();
  ASSERT_TRUE(store.storeRequestsKeepingReadCountsAndResetCacheTime(
      {RequestForStorage("kept", 5, 0), RequestForStorage("odd", 3, 0),
       RequestForStorage("new", 4, 0), RequestForStorage("kept", 6, 0)}));
  EXPECT_EQ(store.getRequests(), (std::vector<RequestForStorage>{RequestForStorage("kept", 6, 2),
                                                                 RequestForStorage("odd", 3, 0),
                                                                 RequestForStorage("new", 4, 0)}));
  EXPECT_EQ(session_->value(RequestStorage::kCacheTimestampKey), boost::json::value(kNow + 3600));
}

TEST_F(RequestStorageTest, StoreRequestLeavesTheStampAlone) {
  auto store = storage();
  EXPECT_FALSE(store.storeRequest(std::nullopt));
  EXPECT_FALSE(session_->value(RequestStorage::kRequestStorageKey));
  EXPECT_TRUE(store.storeRequest(RequestForStorage("7", 1, 0)));
  EXPECT_EQ(store.getRequestForId("7"), RequestForStorage("7", 1, 0));
  EXPECT_FALSE(session_->value(RequestStorage::kCacheTimestampKey));
}

struct EntryCase {
  const char* label;
  const char* stored;  // the dictionary under the storage key
  std::vector<RequestForStorage> records;
};

class StoredEntriesTest : public RequestStorageTest,
                          public testing::WithParamInterface<EntryCase> {};

TEST_P(StoredEntriesTest, BecomeRecords) {
  put(RequestStorage::kRequestStorageKey, GetParam().stored);
  auto store = storage();
  EXPECT_EQ(store.getRequests(), GetParam().records);
  for (const auto& record : GetParam().records) {
    EXPECT_EQ(store.getRequestForId(record.requestId()), record);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, StoredEntriesTest,
    testing::Values(EntryCase{"both",
                              R"({"1": {"comment_count": 3, "read_comment_count": 1}})",
                              {RequestForStorage("1", 3, 1)}},
                    EntryCase{"missingReadCountIsZero",
                              R"({"1": {"comment_count": 3}})",
                              {RequestForStorage("1", 3, 0)}},
                    EntryCase{"nonIntegerEntriesSkipped",
                              R"({"1": {"comment_count": "3"}, "2": 4, "3": {"comment_count": 1.5},
                      "4": {"comment_count": 1}})",
                              {RequestForStorage("4", 1, 0)}},
                    EntryCase{"notADictionary", R"([1, 2])", {}}),
    [](const auto& param) { return std::string(param.param.label); });

struct ExpiryCase {
  const char* label;
  const char* stamp;  // JSON under the timestamp key; empty: none
  bool expired;
  const char* logged;  // empty: nothing
};

class ExpiryTest : public RequestStorageTest, public testing::WithParamInterface<ExpiryCase> {};

TEST_P(ExpiryTest, ExpiredAndLogged) {
  if (*GetParam().stamp != '\0') put(RequestStorage::kCacheTimestampKey, GetParam().stamp);
  EXPECT_EQ(storage().isRequestCacheExpired(), GetParam().expired);
  const auto expected = *GetParam().logged != '\0' ? std::vector<std::string>{GetParam().logged}
                                                   : std::vector<std::string>{};
  EXPECT_EQ(log_, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Stamps, ExpiryTest,
    testing::Values(ExpiryCase{"none", "", true, ""},
                    ExpiryCase{"notANumber", R"("soon")", true, ""},
                    ExpiryCase{"passed", "1699999999.5", true,
                               "`getUpdatesForDevice` cache is expired"},
                    ExpiryCase{"exactlyNow", "1700000000.0", false,
                               "Time left in `getUpdatesForDevice` cache is 0:00"},
                    ExpiryCase{"almostAnHour", "1700003598.0", false,
                               "Time left in `getUpdatesForDevice` cache is 59:58"}),
    [](const auto& param) { return std::string(param.param.label); });

// A backend whose dictionary writes fail, as a full disk makes them.
class FailingBackend : public RequestStorageProtocol {
 public:
  bool store(const boost::json::value& value, std::string_view key) override {
    stored.emplace_back(key, value);
    return true;
  }
  std::optional<boost::json::value> value(std::string_view) override { return std::nullopt; }
  bool update(std::string_view, const Change&) override { return false; }
  std::vector<std::pair<std::string, boost::json::value>> stored;
};

TEST(RequestStorageFailure, AFailedWriteLeavesTheStamp) {
  auto backend = std::make_shared<FailingBackend>();
  RequestStorage store(backend, [] { return kNow; });
  EXPECT_FALSE(store.storeRequestsAndResetCacheTime({RequestForStorage("1", 1, 0)}));
  EXPECT_TRUE(backend->stored.empty());
}

TEST(RequestForStorageCoding, DecodesAllThreeKeysOrNothing) {
  const auto decode = [](std::string_view json) {
    return RequestForStorage::initFrom(boost::json::parse(json).as_object());
  };
  auto record = decode(R"({"requestId": "9", "commentCount": 4, "readCommentCount": 2})");
  ASSERT_TRUE(record);
  EXPECT_EQ(record.value(), RequestForStorage("9", 4, 2));
  EXPECT_EQ(record.value().encode(), boost::json::parse(R"({"requestId": "9", "commentCount": 4,
                                                           "readCommentCount": 2})"));
  EXPECT_FALSE(decode(R"({"requestId": "9", "commentCount": 4})"));
  EXPECT_FALSE(decode(R"({"requestId": 9, "commentCount": 4, "readCommentCount": 2})"));
  EXPECT_FALSE(decode(R"({"requestId": "9", "commentCount": "4", "readCommentCount": 2})"));
}

TEST(RequestForStorageCounts, IncrementMovesBothAndOverflowIsFatal) {
  RequestForStorage record("1", 3, 1);
  record.incrementCommentCounts();
  EXPECT_EQ(record, RequestForStorage("1", 4, 2));
  RequestForStorage full("1", std::numeric_limits<std::int64_t>::max(), 0);
  EXPECT_DEATH(full.incrementCommentCounts(), "overflow");
}

}  // namespace
}  // namespace velmaro
