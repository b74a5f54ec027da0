#include "velmaro/helpcenter/qvk_help_center_last_search.h"

#include "velmaro/util/qvk_classic_logger.h"
#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

namespace {
constexpr const char* kOperation = "QVKHelpCenterLastSearch::initWithQuery(query, resultsCount)";
}

std::optional<QVKHelpCenterLastSearch> QVKHelpCenterLastSearch::initWithQuery(
    const std::optional<std::string>& query, std::optional<std::int64_t> resultsCount) {
  if (!query) {
    QVKClassicLogger::e("Query was nil in %s object not created.", kOperation);
    return std::nullopt;
  }
  if (!resultsCount) {
    QVKClassicLogger::e("Count was nil in %s object not created.", kOperation);
    return std::nullopt;
  }
  return QVKHelpCenterLastSearch(Fields{*query, *resultsCount, kOrigin});
}

boost::json::object QVKHelpCenterLastSearch::toJson() const {
  return QVKJsonUtil::convertObjectToDictionary(fields_);
}

}  // namespace velmaro
