#pragma once

#include <cstdint>

#include <boost/json/object.hpp>

namespace velmaro {

// Payload of the vote event: {"vote": 1 or -1, "articleId": ...}.
struct HelpCenterArticleVoteBlip {
  long vote = 0;
  std::int64_t articleId = 0;
  boost::json::object encode() const { return {{"vote", vote}, {"articleId", articleId}}; }
};

}  // namespace velmaro
