#pragma once

#include <cstdint>

namespace velmaro {

// One page of the flat article list.
class QVKListArticleQuery {
 public:
  QVKListArticleQuery() = delete;
  QVKListArticleQuery(std::int64_t perPage, std::int64_t page) : perPage_(perPage), page_(page) {}
  static QVKListArticleQuery initWithPerPage(std::int64_t perPage, std::int64_t page) {
    return QVKListArticleQuery(perPage, page);
  }

  std::int64_t perPage() const { return perPage_; }
  std::int64_t page() const { return page_; }

 private:
  std::int64_t perPage_;
  std::int64_t page_;
};

}  // namespace velmaro
