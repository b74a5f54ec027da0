#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <boost/json/value_from.hpp>

namespace velmaro {

// The last search of the session, sent with the next article view so that
// the view counts as a click on a search result.
class QVKHelpCenterLastSearch {
 public:
  static constexpr const char* kOrigin = "mobile_sdk";

  // Nothing (and an error in the log) when the query or the count is absent.
  static std::optional<QVKHelpCenterLastSearch> initWithQuery(
      const std::optional<std::string>& query, std::optional<std::int64_t> resultsCount);

  const std::string& query() const { return fields_.query; }
  std::int64_t results_count() const { return fields_.results_count; }
  const std::string& origin() const { return fields_.origin; }

  // {"query": ..., "results_count": ..., "origin": "mobile_sdk"}.
  boost::json::object toJson() const;

  // The properties by name; their names are the JSON keys.
  struct Fields {
    std::string query;
    std::int64_t results_count = 0;
    std::string origin;
  };

 private:
  explicit QVKHelpCenterLastSearch(Fields fields) : fields_(std::move(fields)) {}
  Fields fields_;
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterLastSearch::Fields, (), (query, results_count, origin))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterLastSearch& record) {
  json = record.toJson();
}

}  // namespace velmaro
