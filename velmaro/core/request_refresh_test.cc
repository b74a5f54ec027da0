// The host's request refresh signal: which handler takes it, or the unread mark.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>
#include <unistd.h>

#include "quorvel/platform/run_loop.h"
#include "quorvel/quorvel.h"
#include "velmaro/core/support.h"
#include "velmaro/storage/request_storage.h"

namespace velmaro {
namespace {

struct RefreshCase {
  const char* label;
  bool coreInstance;  // the core library's own current object exists
  bool requestHandler;
  bool listHandler;
  bool expected;
  std::vector<std::string> calls;            // handler: payload
  std::optional<std::int64_t> commentCount;  // of request 123 afterwards
};

class RequestRefreshTest : public ::testing::TestWithParam<RefreshCase> {
 protected:
  void SetUp() override {
    quorvel::QuorvelOptions options;
    options.mainQueue = std::make_shared<quorvel::platform::RunLoop>();
    options.dataDirectory = directory_;
    core_ = quorvel::Quorvel::initialize("app", "http://127.0.0.1:1", "client", options);
    Support::initialize(core_);
    ASSERT_TRUE(
        RequestStorage::initWithQuorvel(*core_).storeRequest(RequestForStorage("123", 2, 2)));
  }
  void TearDown() override {
    Support::resetForTesting();
    quorvel::Quorvel::resetForTesting();
    core_->shutdown();
    std::filesystem::remove_all(directory_);
  }

  // One folder per process: CTest runs the cases side by side.
  const std::filesystem::path directory_ =
      std::filesystem::temp_directory_path() /
      ("velmaro-request-refresh-test-" + std::to_string(::getpid()));
  std::shared_ptr<quorvel::Quorvel> core_;
};

TEST_P(RequestRefreshTest, RefreshRequest) {
  const auto& param = GetParam();
  std::vector<std::string> calls;
  // Handlers go on the object Support holds; without a current core object
  // they must still not be called.
  auto& registry = core_->actionHandlerRegistry();
  if (param.requestHandler) {
    registry.add("Request_Controller_Refresh_id_123", [&calls](const boost::json::object& with) {
      calls.push_back("request: " + boost::json::serialize(with));
    });
    registry.add("Request_Controller_Refresh_id_12",
                 [&calls](const boost::json::object&) { calls.push_back("another request"); });
  }
  if (param.listHandler) {
    registry.add("Request_List_Refresh", [&calls](const boost::json::object& with) {
      calls.push_back("list: " + boost::json::serialize(with));
    });
  }
  const auto support = Support::instance();
  if (!param.coreInstance) quorvel::Quorvel::resetForTesting();

  EXPECT_EQ(support->refreshRequestWithRequestId("123"), param.expected);
  EXPECT_EQ(calls, param.calls);
  if (param.commentCount) {
    const auto stored = RequestStorage::initWithQuorvel(*core_).getRequestForId("123");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->commentCount(), *param.commentCount);
    EXPECT_EQ(stored->readCommentCount(), 2);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Routes, RequestRefreshTest,
    ::testing::Values(RefreshCase{"openRequestViewTakesIt",
                                  true,
                                  true,
                                  true,
                                  true,
                                  {R"(request: {"request_id":"123"})"},
                                  2},
                      RefreshCase{"listOnly", true, false, true, false, {"list: {}"}, 2},
                      RefreshCase{"noHandlerMarksUnread", true, false, false, false, {}, 3},
                      RefreshCase{
                          "noCoreInstanceDoesNothing", false, true, true, false, {}, std::nullopt}),
    [](const auto& param) { return std::string(param.param.label); });

}  // namespace
}  // namespace velmaro
