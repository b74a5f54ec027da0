#pragma once

#include <string>
#include <vector>

#include "quorvel/platform/result.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

// An article in the overview tree: ids as decimal text and the title.
class HelpCenterArticleViewModel {
 public:
  HelpCenterArticleViewModel() = delete;

  // Every key ("id", "section_id", "name") is required.
  static quorvel::platform::Result<HelpCenterArticleViewModel> decode(
      const KeyedDecodingContainer& container);
  // One view model per article, in order. An article without identifier,
  // section id or title is a programming error and stops the process.
  static std::vector<HelpCenterArticleViewModel> convert(
      const std::vector<QVKHelpCenterArticle>& articles);
  static std::vector<HelpCenterArticleViewModel> convertWithArticles(
      const std::vector<QVKHelpCenterArticle>& articles) {
    return convert(articles);
  }

  const std::string& id() const { return id_; }
  const std::string& section_id() const { return section_id_; }
  const std::string& name() const { return name_; }

 private:
  HelpCenterArticleViewModel(std::string id, std::string sectionId, std::string name)
      : id_(std::move(id)), section_id_(std::move(sectionId)), name_(std::move(name)) {}

  std::string id_;
  std::string section_id_;
  std::string name_;
};

using QVKHelpCenterArticleViewModel = HelpCenterArticleViewModel;

}  // namespace velmaro
