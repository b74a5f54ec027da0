#pragma once

#include <algorithm>
#include <cstdint>

#include <boost/json/object.hpp>
#include <httplib.h>

namespace qvk::emulator {

// The page of a list that a request asks for with page and per_page, and the
// paging keys of the answer (next_page and previous_page as full URLs).
class Pager {
 public:
  Pager(const httplib::Request& req, std::size_t total, std::int64_t defaultPerPage,
        std::int64_t maxPerPage);

  std::size_t begin() const { return begin_; }
  std::size_t end() const { return end_; }
  void describe(boost::json::object& answer) const;

 private:
  std::string pageUrl(std::int64_t page) const;

  const httplib::Request& req_;
  std::size_t total_;
  std::int64_t page_ = 1;
  std::int64_t perPage_ = 1;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace qvk::emulator
