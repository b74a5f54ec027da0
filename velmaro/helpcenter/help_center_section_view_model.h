#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quorvel/platform/result.h"
#include "velmaro/helpcenter/help_center_article_view_model.h"
#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

// A section in the overview tree with the articles delivered for it, which
// may be fewer than `article_count`.
class HelpCenterSectionViewModel {
 public:
  static constexpr const char* kSeeAllTitleKey =
      "ios.QVKHelpCenter.helpCenterOverview.see_all.title";

  HelpCenterSectionViewModel() = delete;

  // Keys "id", "category_id", "name", "article_count", "articles", all required.
  static quorvel::platform::Result<HelpCenterSectionViewModel> decode(
      const KeyedDecodingContainer& container);

  const std::string& id() const { return id_; }
  const std::string& category_id() const { return category_id_; }
  const std::string& name() const { return name_; }
  std::int64_t article_count() const { return article_count_; }
  const std::vector<HelpCenterArticleViewModel>& articles() const { return articles_; }

  // The see-all caption: the localized format filled with article_count.
  std::string detailTitle() const;

  // A copy with these articles; the counts and ids stay.
  HelpCenterSectionViewModel sectionByReplacing(
      std::vector<HelpCenterArticleViewModel> articles) const;
  HelpCenterSectionViewModel sectionByReplacingWithArticles(
      std::vector<HelpCenterArticleViewModel> articles) const {
    return sectionByReplacing(std::move(articles));
  }

  // Sections are the same section when their ids are equal.
  bool operator==(const HelpCenterSectionViewModel& other) const { return id_ == other.id_; }

 private:
  HelpCenterSectionViewModel(std::string id, std::string categoryId, std::string name,
                             std::int64_t articleCount,
                             std::vector<HelpCenterArticleViewModel> articles)
      : id_(std::move(id)),
        category_id_(std::move(categoryId)),
        name_(std::move(name)),
        article_count_(articleCount),
        articles_(std::move(articles)) {}

  std::string id_;
  std::string category_id_;
  std::string name_;
  std::int64_t article_count_;
  std::vector<HelpCenterArticleViewModel> articles_;
};

using QVKHelpCenterSectionViewModel = HelpCenterSectionViewModel;

}  // namespace velmaro
