#pragma once

#include <memory>
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

  const std::string& absoluteString() const { return parts_->text; }
  const std::string& scheme() const { return parts_->scheme; }
  const std::string& host() const { return parts_->host; }
  // The path as written (percent escapes kept), "" when there is none.
  const std::string& path() const { return parts_->path; }
  const std::optional<std::string>& query() const { return parts_->query; }
  const std::optional<std::string>& fragment() const { return parts_->fragment; }

  // "/" for an absolute path, then each segment percent-decoded:
  // "/api/v2/votes/1.json" -> {"/", "api", "v2", "votes", "1.json"}.
  std::vector<std::string> pathComponents() const;
  // The last of pathComponents(), "" when there are none.
  std::string lastPathComponent() const;

  bool operator==(const Url& other) const { return parts_->text == other.parts_->text; }

 private:
  struct Parts {
    std::string text;
    std::string scheme;
    std::string host;
    std::string path;
    std::optional<std::string> query;
    std::optional<std::string> fragment;
  };

  explicit Url(std::shared_ptr<const Parts> parts) : parts_(std::move(parts)) {}

  // Immutable and shared: a URL is copied at every step of a call (request,
  // dispatcher, response), and a copy is then one reference count, not six
  // strings.
  std::shared_ptr<const Parts> parts_;  // never null
};

}  // namespace quorvel::platform
