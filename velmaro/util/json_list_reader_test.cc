// The list reader hands the same elements as a parse of the whole document
// followed by JsonValueConversion::parseList, and reserves exactly.
#include "velmaro/util/json_list_reader.h"

#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {
namespace {

struct ListCase {
  const char* label;
  const char* document;
};

std::string text(const boost::json::object& element) {
  return boost::json::serialize(element);
}

// The elements as the whole-document parse reads them; none for invalid JSON.
std::vector<std::string> fromTree(const char* document) {
  boost::system::error_code ec;
  auto value = boost::json::parse(document, ec);
  if (ec || !value.is_object()) return {};
  return JsonValueConversion::parseList(value.as_object(), "categories", &text);
}

class JsonListReaderTest : public ::testing::TestWithParam<ListCase> {};

TEST_P(JsonListReaderTest, ReadsAsTheWholeDocumentParse) {
  std::vector<std::string> elements;
  std::size_t reserved = 0;
  JsonListReader::read(
      GetParam().document, "categories", [&](std::size_t n) { reserved = n; },
      [&](const boost::json::object& element) { elements.push_back(text(element)); });
  const auto expected = fromTree(GetParam().document);
  EXPECT_EQ(elements, expected);
  EXPECT_EQ(reserved, expected.size());
}

INSTANTIATE_TEST_SUITE_P(
    Documents, JsonListReaderTest,
    ::testing::Values(
        ListCase{"plain", R"({"categories":[{"id":1,"name":"a"},{"id":2}],"count":2})"},
        ListCase{
            "nestedValuesAndEscapes",
            R"({"categories":[{"a":[1,[2,{"b":null}]],"s":"x\"\u00e9\ny","d":1.5,"u":18446744073709551615,"t":true}]})"},
        ListCase{
            "afterOtherValues",
            R"({"users":[{"categories":[9]}],"meta":{"categories":[{"id":8}]},"categories":[{"id":1}]})"},
        ListCase{"elementsThatAreNoObjects", R"({"categories":[1,"x",null,[{"id":1}],{"id":2}]})"},
        ListCase{"innerKeyOfTheSameName", R"({"categories":[{"categories":[{"id":3}]}]})"},
        ListCase{"escapedKey", R"({"categ\u006fries":[{"id":1}]})"},
        ListCase{"lastKeyWins", R"({"categories":[{"id":1}],"categories":[{"id":2},{"id":3}]})"},
        ListCase{"lastKeyNoArray", R"({"categories":[{"id":1}],"categories":{"id":2}})"},
        ListCase{"emptyList", R"({"categories":[]})"},
        ListCase{"missingKey", R"({"sections":[{"id":1}]})"},
        ListCase{"keyNoArray", R"({"categories":"none"})"},
        ListCase{"topLevelArray", R"([{"categories":[{"id":1}]}])"},
        ListCase{"notJson", R"({"categories":[{"id":1},)"},
        ListCase{"trailingGarbage", R"({"categories":[{"id":1}]} x)"}),
    [](const auto& param) { return std::string(param.param.label); });

}  // namespace
}  // namespace velmaro
