#include "velmaro/helpcenter/query_string_builder.h"

namespace velmaro {

void QueryStringBuilder::append(std::string_view name, std::string_view value) {
  text_ += text_.empty() ? '?' : '&';
  text_.append(name).append("=").append(value);
}

std::string QueryStringBuilder::join(const std::optional<std::vector<std::int64_t>>& ids) {
  std::string joined;
  if (!ids) return joined;
  for (std::size_t i = 0; i < ids->size(); ++i) {
    if (i != 0) joined += ',';
    joined += std::to_string((*ids)[i]);
  }
  return joined;
}

}  // namespace velmaro
