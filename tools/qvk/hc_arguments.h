#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qvk {

// What the `hc` commands were given; the command line writes straight into
// it. Every field is absent unless its argument or option appeared, so that
// the query objects built from it leave the matching fields unset. (The
// empty initialisers let tests name only the fields they set.)
struct HcArguments {
  // The command's numeric id: category, section or article.
  std::optional<std::int64_t> id{};
  // Ids that travel as text: the article id of a vote, a vote id.
  std::optional<std::string> textId{};
  std::optional<std::string> query{};
  std::optional<std::vector<std::string>> labels{};
  // Search and overview narrow to several categories or sections...
  std::optional<std::vector<std::int64_t>> categoryIds{};
  std::optional<std::vector<std::int64_t>> sectionIds{};
  // ...suggestions to one of each.
  std::optional<std::int64_t> categoryId{};
  std::optional<std::int64_t> sectionId{};
  std::optional<std::int64_t> page{};
  std::optional<std::int64_t> perPage{};

  bool operator==(const HcArguments&) const = default;
};

}  // namespace qvk
