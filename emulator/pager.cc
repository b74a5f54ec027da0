#include "emulator/pager.h"

#include <boost/json.hpp>

#include "emulator/http_support.h"

namespace qvk::emulator {

Pager::Pager(const httplib::Request& req, std::size_t total, std::int64_t defaultPerPage,
             std::int64_t maxPerPage)
    : req_(req), total_(total) {
  perPage_ = http::parseId(http::param(req, "per_page")).value_or(defaultPerPage);
  perPage_ = std::clamp<std::int64_t>(perPage_, 1, maxPerPage);
  page_ = std::max<std::int64_t>(1, http::parseId(http::param(req, "page")).value_or(1));
  auto start = static_cast<std::size_t>((page_ - 1) * perPage_);
  begin_ = std::min(start, total_);
  end_ = std::min(begin_ + static_cast<std::size_t>(perPage_), total_);
}

std::string Pager::pageUrl(std::int64_t page) const {
  std::string url = http::baseUrl(req_) + req_.path + "?";
  bool first = true;
  bool wrotePage = false;
  for (const auto& [key, value] : req_.params) {
    if (!first) url += "&";
    first = false;
    if (key == "page") {
      url += "page=" + std::to_string(page);
      wrotePage = true;
    } else {
      url += http::percentEncode(key) + "=" + http::percentEncode(value);
    }
  }
  if (!wrotePage) url += std::string(first ? "" : "&") + "page=" + std::to_string(page);
  return url;
}

void Pager::describe(boost::json::object& answer) const {
  auto pageCount = static_cast<std::int64_t>((total_ + static_cast<std::size_t>(perPage_) - 1) /
                                             static_cast<std::size_t>(perPage_));
  answer["page"] = page_;
  answer["per_page"] = perPage_;
  answer["page_count"] = pageCount;
  answer["count"] = static_cast<std::int64_t>(total_);
  answer["next_page"] = page_ < pageCount ? boost::json::value(pageUrl(page_ + 1)) : nullptr;
  answer["previous_page"] =
      page_ > 1
          ? boost::json::value(pageUrl(std::min(page_ - 1, std::max<std::int64_t>(pageCount, 1))))
          : nullptr;
}

}  // namespace qvk::emulator
