#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvel::platform {

// Turns an HTML fragment (an article title, a snippet) into the plain text a
// browser would show for it.
class HtmlText {
 public:
  // Larger inputs are refused: the parse tree costs several times the input.
  static constexpr size_t kMaxInputBytes = 1 << 20;
  // More '<' than this is refused too: the parser's cost grows with the
  // square of the nesting depth, and each '<' may open one more level.
  static constexpr size_t kMaxTags = 4096;

  // Markup dropped, entities decoded, script/style/head content dropped, white
  // space handled like a browser: runs of white space become one space, block
  // elements and <br> start new lines, <pre> keeps its white space (at the
  // ends of the result too), and the result has no other leading or trailing
  // white space. Nothing for input that is not valid UTF-8, longer than
  // kMaxInputBytes or with more than kMaxTags '<'.
  static std::optional<std::string> toPlainText(std::string_view html);

  // Whether `text` is already its own plain text: no markup, no entity, no
  // white space that would be collapsed or trimmed. Such text skips the parser.
  static bool isAlreadyPlain(std::string_view text);
};

}  // namespace quorvel::platform
