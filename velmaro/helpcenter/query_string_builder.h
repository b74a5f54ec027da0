#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmaro {

// Builds a query string parameter by parameter: each one is preceded by "?"
// when nothing was written yet and by "&" otherwise. Values are written as
// given; escaping the whole text is the caller's last step.
class QueryStringBuilder {
 public:
  void append(std::string_view name, std::string_view value);
  // Text written as it is, without a separator.
  void appendRaw(std::string_view text) { text_.append(text); }
  const std::string& text() const { return text_; }

  // Ids joined with ","; "" for none.
  static std::string join(const std::optional<std::vector<std::int64_t>>& ids);

 private:
  std::string text_;
};

}  // namespace velmaro
