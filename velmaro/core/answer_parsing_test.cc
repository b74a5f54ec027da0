// A list answer reads the same whether it is short enough to be parsed as one
// tree or long enough to be read element by element.
#include "velmaro/core/answer_parsing.h"

#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace velmaro {
namespace {

struct ListCase {
  const char* label;
  const char* document;
};

std::string text(const boost::json::object& element) {
  return boost::json::serialize(element);
}

struct Read {
  std::vector<std::string> records;
  bool reportedUnreadable = false;
};

Read readList(std::string body) {
  Read read;
  QVKDispatcherResponse response(std::nullopt, std::move(body));
  response.onUnreadable = [&](std::string_view) { read.reportedUnreadable = true; };
  auto result = AnswerParsing::list<std::string>("categories", &text)(std::move(response));
  if (result.ok()) read.records = result.value();
  return read;
}

// The same document grown past the one-tree limit by a long field placed
// before it; a document that is no object, or no JSON, is grown by trailing
// blanks, which change nothing.
std::string longer(const std::string& document) {
  const std::string filler(AnswerParsing::kWholeTreeBytes, 'x');
  if (!document.empty() && document.front() == '{' && document.size() > 1 &&
      document.find("\"categories\"") != std::string::npos && document.back() == '}') {
    return "{\"filler\":\"" + filler + "\"," + document.substr(1);
  }
  return document + std::string(AnswerParsing::kWholeTreeBytes + 1, ' ');
}

class AnswerParsingListTest : public ::testing::TestWithParam<ListCase> {};

TEST_P(AnswerParsingListTest, ShortAndLongAnswersReadAlike) {
  const std::string document = GetParam().document;
  const Read shortRead = readList(document);
  const std::string grown = longer(document);
  ASSERT_GT(grown.size(), AnswerParsing::kWholeTreeBytes);
  const Read longRead = readList(grown);
  EXPECT_EQ(shortRead.records, longRead.records);
  EXPECT_EQ(shortRead.reportedUnreadable, longRead.reportedUnreadable);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AnswerParsingListTest,
    ::testing::Values(
        ListCase{"plain", R"({"categories":[{"id":1,"name":"a"},{"id":2}],"count":2})"},
        ListCase{"elementsThatAreNoObjects", R"({"categories":[1,"x",null,{"id":2}]})"},
        ListCase{"lastKeyWins", R"({"categories":[{"id":1}],"categories":[{"id":2},{"id":3}]})"},
        ListCase{"missingKey", R"({"sections":[{"id":1}]})"},
        ListCase{"keyNoArray", R"({"categories":"none"})"},
        ListCase{"topLevelArray", R"([{"categories":[{"id":1}]}])"},
        ListCase{"cutOff", R"({"categories":[{"id":1},)"}),
    [](const auto& row) { return std::string(row.param.label); });

}  // namespace
}  // namespace velmaro
