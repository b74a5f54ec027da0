// Help Center records from hostile JSON: every reader of a list, search,
// single-record, attachment, vote or suggestion answer, the joins of the
// list parser, the view models built from a list answer, the article tree
// of the overview (from the raw bytes, as it is read) and the JSON written
// back from each record.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <boost/json.hpp>

#include "velmaro/helpcenter/help_center_article_view_model.h"
#include "velmaro/helpcenter/help_center_category_view_model_container.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_article_vote.h"
#include "velmaro/helpcenter/qvk_help_center_attachment.h"
#include "velmaro/helpcenter/qvk_help_center_category.h"
#include "velmaro/helpcenter/qvk_help_center_parser.h"
#include "velmaro/helpcenter/qvk_help_center_section.h"
#include "velmaro/helpcenter/qvk_help_center_simple_article.h"

namespace {

using namespace velmaro;

template <typename Record>
void write(const std::vector<Record>& records) {
  for (const auto& record : records) (void)boost::json::value_from(record);
}

// A single-record answer wraps its record under one key.
template <typename Parse>
void single(const boost::json::object& json, const char* key, Parse parse) {
  if (const auto* inner = json.if_contains(key); inner != nullptr && inner->is_object()) {
    (void)boost::json::value_from(parse(inner->get_object()));
  }
}

// Only articles with an id, a section and a title become view models: the
// list code asks for no others, and convert stops the process on them.
void viewModels(const std::vector<QVKHelpCenterArticle>& articles) {
  std::vector<QVKHelpCenterArticle> complete;
  for (const auto& article : articles) {
    if (article.identifier && article.section_id && article.title) complete.push_back(article);
  }
  (void)HelpCenterArticleViewModel::convert(complete);
}

void lists(const boost::json::object& json) {
  const QVKHelpCenterParser parser(json);
  const auto articles = parser.parseArticles(json);
  write(articles);
  viewModels(articles);
  write(parser.parseArticleSearchResults(json));
  write(parser.parseArticlesWithRootKey(json, "articles"));
  write(parser.parseFlatArticles(json));
  write(QVKHelpCenterCategory::parseCategories(json));
  write(QVKHelpCenterSection::parseSections(json));
  const auto attachments = QVKHelpCenterAttachment::parseAttachments(json);
  write(attachments);
  for (const auto& attachment : attachments) (void)attachment.humanReadableFileSize();
  write(QVKHelpCenterArticleVote::parseArticleVotes(json));
  write(QVKHelpCenterSimpleArticle::parseDeflectionSearchResults(json));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (const auto tree = HelpCenterCategoryViewModelContainer::parse(bytes); tree.ok()) {
    for (const auto& category : *tree) {
      for (const auto& section : category->sections()) (void)section.detailTitle();
    }
  }
  boost::system::error_code error;
  const auto value = boost::json::parse(bytes, error);
  if (error || !value.is_object()) return 0;
  const auto& json = value.get_object();
  lists(json);
  single(json, "article", &QVKHelpCenterArticle::parseArticle);
  single(json, "section", &QVKHelpCenterSection::parseSection);
  single(json, "category", &QVKHelpCenterCategory::parseCategory);
  single(json, "vote", &QVKHelpCenterArticleVote::parseArticleVote);
  single(json, "article_attachment", &QVKHelpCenterAttachment::parseAttachment);
  (void)QVKHelpCenterArticle::parseHTMLString(json.if_contains("title"));
  return 0;
}
