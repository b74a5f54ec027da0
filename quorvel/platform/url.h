#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::platform {

// A URL as a phone platform's URL type sees it: made from text only when the
// text is a valid URL as it stands (no blank, no non-ASCII character, every
// '%' a proper escape), and split into scheme, host, path, query, fragment.
class Url {
 public:
  // Nothing when `text` is not a valid URL as it stands.
  static std::optional<Url> make(std::string_view text);

  const std::string& absoluteString() const { return text_; }
  const std::string& scheme() const { return scheme_; }
  const std::string& host() const { return host_; }
  // The path as written (percent escapes kept), "" when there is none.
  const std::string& path() const { return path_; }
  const std::optional<std::string>& query() const { return query_; }
  const std::optional<std::string>& fragment() const { return fragment_; }

  // "/" for an absolute path, then each segment percent-decoded:
  // "/api/v2/votes/1.json" -> {"/", "api", "v2", "votes", "1.json"}.
  std::vector<std::string> pathComponents() const;
  // The last of pathComponents(), "" when there are none.
  std::string lastPathComponent() const;

  bool operator==(const Url& other) const { return text_ == other.text_; }

 private:
  explicit Url(std::string text) : text_(std::move(text)) {}

  std::string text_;
  std::string scheme_;
  std::string host_;
  std::string path_;
  std::optional<std::string> query_;
  std::optional<std::string> fragment_;
};

}  // namespace quorvel::platform
