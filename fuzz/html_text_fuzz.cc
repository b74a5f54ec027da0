// HTML from hostile bytes: the plain text of a title or snippet, and the
// sanitizer that closes void elements of an article body. Text that is taken
// as its own plain text without parsing must be what the parser makes of it,
// plain text starts and ends with no white space unless a <pre> keeps it,
// and the sanitizer only adds.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "quorvel/platform/html_text.h"
#include "velmaro/util/html_sanitizer.h"

namespace {

using quorvel::platform::HtmlText;

bool isHtmlSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool mayHoldPreformatted(std::string_view html) {
  for (std::size_t at = html.find('<'); at != std::string_view::npos; at = html.find('<', at + 1)) {
    const auto name = html.substr(at + 1, 3);
    if (name.size() == 3 && (name[0] | 0x20) == 'p' && (name[1] | 0x20) == 'r' &&
        (name[2] | 0x20) == 'e') {
      return true;
    }
  }
  return false;
}

void checkPlainText(std::string_view html) {
  const auto text = HtmlText::toPlainText(html);
  if (!text) return;
  // <pre> keeps its spaces, at the ends too.
  if (!text->empty() && (isHtmlSpace(text->front()) || isHtmlSpace(text->back())) &&
      !mayHoldPreformatted(html)) {
    std::abort();
  }
  // The fast path for text that is already plain must agree with the
  // parser, which markup around the text makes it take.
  if (HtmlText::isAlreadyPlain(html) &&
      HtmlText::toPlainText("<span>" + std::string(html) + "</span>") != html) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view html(reinterpret_cast<const char*>(data), size);
  checkPlainText(html);
  if (velmaro::HTMLSanitizer::clean(html).size() < html.size()) std::abort();
  return 0;
}
