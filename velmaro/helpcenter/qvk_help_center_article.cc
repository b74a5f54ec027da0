#include "velmaro/helpcenter/qvk_help_center_article.h"

#include <cstdlib>

#include <boost/json/serialize.hpp>

#include "quorvel/platform/html_text.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {

using J = JsonValueConversion;

namespace {

constexpr const char* kTitleError = "Cannot parse title of the article: \"%@\"";
constexpr const char* kVoteError =
    "Cannot determine vote count because vote_sum and / or vote_count are nil";

}  // namespace

QVKHelpCenterArticle QVKHelpCenterArticle::parseArticle(const boost::json::object& json) {
  QVKHelpCenterArticle article;
  article.identifier = J::identifier(json, "id");
  article.section_id = J::identifier(json, "section_id");
  article.title = parseHTMLString(json.if_contains("title"));
  if (const auto* body = json.if_contains("body")) {
    if (body->is_null()) {
      article.body.emplace();
    } else if (body->is_string()) {
      const auto& text = body->get_string();
      article.body.emplace(text.data(), text.size());
    }
  }
  article.author_id = J::identifier(json, "author_id");
  article.created_at = QVKDateUtil::dateForJsonString(json.if_contains("created_at"));
  article.position = J::integerValue(json, "position");
  article.outdated = J::boolValue(json, "outdated");
  article.voteSum = J::number(json, "vote_sum");
  article.voteCount = J::number(json, "vote_count");
  article.locale = J::string(json, "locale");
  article.labelNames = J::stringArray(json, "label_names");
  article.htmlUrl = J::string(json, "html_url");
  return article;
}

std::string QVKHelpCenterArticle::parseHTMLString(const boost::json::value* value) {
  if (value == nullptr || !value->is_string()) {
    QVKClassicLogger::e(kTitleError, value != nullptr ? *value : boost::json::value(nullptr));
    return "";
  }
  const std::string_view text(value->get_string().data(), value->get_string().size());
  // Most titles are plain already; they skip the HTML parser.
  if (quorvel::platform::HtmlText::isAlreadyPlain(text)) return std::string(text);
  if (auto plain = quorvel::platform::HtmlText::toPlainText(text)) return std::move(*plain);
  QVKClassicLogger::e(kTitleError, text);
  return std::string(text);
}

std::int64_t QVKHelpCenterArticle::getUpvoteCount() const {
  if (!voteSum || !voteCount) {
    QVKClassicLogger::error(kVoteError);
    return -1;
  }
  return std::llabs((*voteCount + *voteSum) / 2);
}

std::int64_t QVKHelpCenterArticle::getDownvoteCount() const {
  if (!voteSum || !voteCount) {
    QVKClassicLogger::error(kVoteError);
    return -1;
  }
  return std::llabs((*voteCount - *voteSum) / 2);
}

std::string QVKHelpCenterArticle::description() const {
  return boost::json::serialize(QVKJsonUtil::convertObjectToDictionary(*this));
}

}  // namespace velmaro
