#pragma once

#include <string>
#include <string_view>

namespace velmaro {

// Closes the void elements of article HTML (<br>, <hr/>, <img ...>) so that a
// viewer that expects well-formed markup can show it. Only closing tags are
// added; nothing is removed.
class HTMLSanitizer {
 public:
  HTMLSanitizer() = default;

  static std::string clean(std::string_view html);
  static std::string cleanWithHtml(std::string_view html) { return clean(html); }
};

}  // namespace velmaro
