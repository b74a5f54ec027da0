// JSON access, mapping by property name, archiving, and the small helpers.
#include "velmaro/util/qvk_json_util.h"

#include <gtest/gtest.h>

#include "velmaro/util/qvk_coding.h"
#include "velmaro/util/qvk_stack.h"
#include "velmaro/util/qvk_string_util.h"

namespace velmaro {
namespace {

struct Base {
  std::optional<std::int64_t> baseOnly;
};
BOOST_DESCRIBE_STRUCT(Base, (), (baseOnly))

struct Record : Base, QVKCoding<Record> {
  std::optional<std::int64_t> id;
  std::optional<std::string> name;
  boost::json::value extra;
  std::optional<std::vector<std::string>> tags;
};
BOOST_DESCRIBE_STRUCT(Record, (Base), (id, name, extra, tags))

TEST(QVKJsonUtilTest, CleaningTellsNullFromMissing) {
  const auto dict =
      boost::json::parse(R"({"a": null, "b": 1, "tags": null, "s": "x"})").as_object();
  EXPECT_EQ(QVKJsonUtil::cleanJSONVal(dict, "a"), nullptr);
  EXPECT_EQ(QVKJsonUtil::cleanJSONVal(dict, "missing"), nullptr);
  ASSERT_NE(QVKJsonUtil::cleanJSONVal(dict, "b"), nullptr);
  EXPECT_EQ(*QVKJsonUtil::cleanJSONVal(dict, "b"), 1);
  EXPECT_EQ(QVKJsonUtil::cleanJSONArrayVal(dict, "tags"), boost::json::value(boost::json::array()));
  EXPECT_FALSE(QVKJsonUtil::cleanJSONArrayVal(dict, "missing").has_value());
  EXPECT_EQ(QVKJsonUtil::cleanJSONArrayVal(dict, "s"), boost::json::value("x"));  // as it is
}

TEST(QVKJsonUtilTest, PropertiesAreTheClassesOwnInDeclarationOrder) {
  EXPECT_EQ(QVKJsonUtil::arrayWithPropertiesOfObject<Record>(),
            (std::vector<std::string>{"id", "name", "extra", "tags"}));
}

TEST(QVKJsonUtilTest, ConvertingAJsonObjectSetsOnlyNamedProperties) {
  struct Case {
    const char* json;
    bool made;
    std::optional<std::int64_t> id;
    std::optional<std::string> name;
  };
  const Case cases[] = {
      {R"({})", false, {}, {}},
      {R"({"unknown": 1})", false, {}, {}},
      {R"({"id": 5, "unknown": 1})", true, 5, {}},
      {R"({"id": null, "name": "n"})", true, {}, "n"},
      {R"({"id": "not a number"})", true, {}, {}},  // does not fit: left unset
      {R"({"baseOnly": 3})", false, {}, {}},        // a base-class property is not the record's
  };
  for (const auto& c : cases) {
    auto record = QVKJsonUtil::convertJsonObject<Record>(boost::json::parse(c.json).as_object());
    ASSERT_EQ(record.has_value(), c.made) << c.json;
    if (!record) continue;
    EXPECT_EQ(record->id, c.id) << c.json;
    EXPECT_EQ(record->name, c.name) << c.json;
  }
  auto list = QVKJsonUtil::convertArrayOfJsonObjects<Record>(
      boost::json::parse(R"([{"id": 1}, {}, 7, {"name": "b"}])").as_array());
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[1].name, "b");
}

TEST(QVKJsonUtilTest, DictionaryLeavesOutAbsentPropertiesAndArchivesRoundTrip) {
  Record r;
  r.id = 9;
  r.tags = std::vector<std::string>{"a", "b"};
  r.baseOnly = 1;
  const auto dict = QVKJsonUtil::convertObjectToDictionary(r);
  EXPECT_EQ(boost::json::serialize(dict), R"({"id":9,"tags":["a","b"]})");

  auto restored = Record::initWithCoder(r.encodeWithCoder());
  EXPECT_EQ(restored.id, 9);
  EXPECT_FALSE(restored.name.has_value());
  EXPECT_EQ(restored.tags, r.tags);
  EXPECT_FALSE(restored.baseOnly.has_value());  // only the class's own properties are archived
}

TEST(QVKSmallHelpersTest, CsvAndStack) {
  EXPECT_EQ(QVKStringUtil::csvStringFromArray({"1", "2", "3"}), "1,2,3");
  EXPECT_EQ(QVKStringUtil::csvStringFromArray({}), "");
  QVKStack<int> stack;
  EXPECT_FALSE(stack.pop().has_value());
  stack.push(1);
  stack.push(2);
  EXPECT_TRUE(stack.contains(1));
  EXPECT_EQ(stack.pop(), 2);
  EXPECT_EQ(stack.pop(), 1);
  EXPECT_TRUE(stack.empty());
}

}  // namespace
}  // namespace velmaro
