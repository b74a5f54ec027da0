#include "tools/qvk/output.h"

#include <sstream>
#include <vector>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "quorvel/platform/transport_error.h"
#include "tools/qvk/client_errors.h"

namespace qvk {
namespace {

using quorvel::platform::Error;
using quorvel::platform::TransportError;
using quorvel::platform::TransportErrorCode;

const char* const kUrl = "http://127.0.0.1:9";

struct Printed {
  int status;
  std::string out;
  std::string err;
};

Printed report(const Error& error, bool json) {
  std::ostringstream out;
  std::ostringstream err;
  Output output(out, err, json, {kUrl});
  int status = output.error(error);
  return {status, out.str(), err.str()};
}

struct ErrorCase {
  const char* name;
  Error error;
  std::string hint;  // empty: none
};

class OutputError : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(OutputError, JsonDocumentOnStandardOutputHintOnStandardError) {
  const auto& c = GetParam();
  auto printed = report(c.error, true);
  EXPECT_EQ(printed.status, 1);
  auto document = boost::json::parse(printed.out).as_object();
  ASSERT_EQ(document.size(), 1u);
  const auto& body = document.at("error").as_object();
  EXPECT_EQ(body.size(), 3u);
  EXPECT_EQ(body.at("domain").as_string(), c.error.domain);
  EXPECT_EQ(body.at("code").as_int64(), c.error.code);
  EXPECT_EQ(body.at("description").as_string(), c.error.localizedDescription());
  EXPECT_EQ(printed.err, c.hint.empty() ? "" : "hint: " + c.hint + "\n");
}

TEST_P(OutputError, TextOnStandardError) {
  const auto& c = GetParam();
  auto printed = report(c.error, false);
  EXPECT_EQ(printed.status, 1);
  EXPECT_EQ(printed.out, "");
  std::string expected = "error: " + c.error.localizedDescription() + " (domain " + c.error.domain +
                         ", code " + std::to_string(c.error.code) + ")\n";
  if (!c.hint.empty()) expected += "hint: " + c.hint + "\n";
  EXPECT_EQ(printed.err, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Errors, OutputError,
    ::testing::Values(
        ErrorCase{"Refused", TransportError::make(TransportErrorCode::kCannotConnectToHost),
                  std::string("is qvk-emulator running at ") + kUrl + "?"},
        ErrorCase{"NoUrl", ClientErrors::missingUrl(), "pass --url or set QVK_URL"},
        ErrorCase{"VotingOff",
                  Error::withDescription("com.quorvel.support", 2001,
                                         "Help Center Article Voting is disabled, can't execute "
                                         "network request"),
                  "article voting is off in the Help Center settings (see `qvk settings "
                  "help-center`)"},
        ErrorCase{"Validation",
                  Error::withDescription("QVKParameterValidationErrorDomain", 0,
                                         "The labels is null, validation error"),
                  ""}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

class OutputList : public ::testing::TestWithParam<std::size_t> {};

TEST_P(OutputList, WritesTheDocumentOfTheWholeList) {
  std::vector<boost::json::value> records(GetParam(), boost::json::object{{"name", "a\"b"}});
  if (!records.empty()) records.front() = nullptr;
  std::ostringstream out;
  std::ostringstream err;
  Output(out, err, true, {kUrl}).list(records);
  EXPECT_EQ(out.str(), boost::json::serialize(boost::json::value_from(records)) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Sizes, OutputList, ::testing::Values(0u, 1u, 3u));

}  // namespace
}  // namespace qvk
