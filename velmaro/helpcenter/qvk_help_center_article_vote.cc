#include "velmaro/helpcenter/qvk_help_center_article_vote.h"

#include <boost/json/serialize.hpp>

#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

using J = JsonValueConversion;

QVKHelpCenterArticleVote QVKHelpCenterArticleVote::parseArticleVote(
    const boost::json::object& json) {
  QVKHelpCenterArticleVote vote;
  vote.identifier = J::identifier(json, "id");
  vote.url = J::string(json, "url");
  vote.userId = J::identifier(json, "user_id");
  vote.value = J::numberText(json, "value");
  vote.itemId = J::identifier(json, "item_id");
  vote.itemType = J::string(json, "item_type");
  vote.createdAt = QVKDateUtil::dateForJsonString(json.if_contains("created_at"));
  vote.updatedAt = QVKDateUtil::dateForJsonString(json.if_contains("updated_at"));
  return vote;
}

std::vector<QVKHelpCenterArticleVote> QVKHelpCenterArticleVote::parseArticleVotes(
    const boost::json::object& json) {
  return J::parseList(json, "votes", &parseArticleVote);
}

std::string QVKHelpCenterArticleVote::description() const {
  return StringFormat::format(
      "%@:\n%@", "QVKHelpCenterArticleVote",
      boost::json::serialize(QVKJsonUtil::convertObjectToDictionary(*this)));
}

}  // namespace velmaro
