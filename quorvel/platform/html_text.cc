#include "quorvel/platform/html_text.h"

#include <algorithm>
#include <vector>

#include <gumbo.h>

#include "quorvel/platform/utf16.h"

namespace quorvel::platform {
namespace {

bool isHtmlSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

// Elements whose content a browser never shows as text.
bool isHidden(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_HEAD:
    case GUMBO_TAG_TITLE:
    case GUMBO_TAG_SCRIPT:
    case GUMBO_TAG_STYLE:
    case GUMBO_TAG_TEMPLATE:
    case GUMBO_TAG_NOSCRIPT:
    case GUMBO_TAG_IFRAME:
      return true;
    default:
      return false;
  }
}

// Elements laid out as blocks: their content starts and ends on a line of its own.
bool isBlock(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_ADDRESS:
    case GUMBO_TAG_ARTICLE:
    case GUMBO_TAG_ASIDE:
    case GUMBO_TAG_BLOCKQUOTE:
    case GUMBO_TAG_CAPTION:
    case GUMBO_TAG_CENTER:
    case GUMBO_TAG_DD:
    case GUMBO_TAG_DETAILS:
    case GUMBO_TAG_DIV:
    case GUMBO_TAG_DL:
    case GUMBO_TAG_DT:
    case GUMBO_TAG_FIELDSET:
    case GUMBO_TAG_FIGCAPTION:
    case GUMBO_TAG_FIGURE:
    case GUMBO_TAG_FOOTER:
    case GUMBO_TAG_FORM:
    case GUMBO_TAG_H1:
    case GUMBO_TAG_H2:
    case GUMBO_TAG_H3:
    case GUMBO_TAG_H4:
    case GUMBO_TAG_H5:
    case GUMBO_TAG_H6:
    case GUMBO_TAG_HEADER:
    case GUMBO_TAG_HGROUP:
    case GUMBO_TAG_HR:
    case GUMBO_TAG_LEGEND:
    case GUMBO_TAG_LI:
    case GUMBO_TAG_MAIN:
    case GUMBO_TAG_MENU:
    case GUMBO_TAG_NAV:
    case GUMBO_TAG_OL:
    case GUMBO_TAG_P:
    case GUMBO_TAG_PRE:
    case GUMBO_TAG_SECTION:
    case GUMBO_TAG_SUMMARY:
    case GUMBO_TAG_TABLE:
    case GUMBO_TAG_TR:
    case GUMBO_TAG_UL:
      return true;
    default:
      return false;
  }
}

// Collects text under browser white-space rules. Separators (a space, line
// breaks) are held back until the next visible character, so nothing leads
// or trails and runs collapse.
class PlainTextWriter {
 public:
  void text(std::string_view s, bool preformatted) {
    for (char c : s) {
      if (!preformatted && isHtmlSpace(c)) {
        pendingSpace_ = true;
      } else if (preformatted && c == '\n') {
        ++pendingNewlines_;
        pendingSpace_ = false;
      } else {
        flush();
        out_ += c;
      }
    }
  }
  void space() { pendingSpace_ = true; }
  void lineBreak() {
    ++pendingNewlines_;
    pendingSpace_ = false;
  }
  void blockBoundary() {
    pendingNewlines_ = std::max(pendingNewlines_, 1);
    pendingSpace_ = false;
  }
  std::string take() && { return std::move(out_); }

 private:
  void flush() {
    if (!out_.empty()) {
      if (pendingNewlines_ > 0) {
        out_.append(static_cast<size_t>(pendingNewlines_), '\n');
      } else if (pendingSpace_) {
        out_ += ' ';
      }
    }
    pendingNewlines_ = 0;
    pendingSpace_ = false;
  }

  std::string out_;
  bool pendingSpace_ = false;
  int pendingNewlines_ = 0;
};

// Walks the tree with an explicit stack: deeply nested markup must not
// exhaust the call stack.
std::string collectText(const GumboNode* root) {
  struct Step {
    const GumboNode* node;
    bool leaving;
  };
  PlainTextWriter writer;
  int preDepth = 0;
  std::vector<Step> stack{{root, false}};
  while (!stack.empty()) {
    const auto [node, leaving] = stack.back();
    stack.pop_back();
    if (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_WHITESPACE ||
        node->type == GUMBO_NODE_CDATA) {
      writer.text(node->v.text.text, preDepth > 0);
      continue;
    }
    if (node->type != GUMBO_NODE_ELEMENT && node->type != GUMBO_NODE_DOCUMENT) continue;
    const GumboTag tag = node->type == GUMBO_NODE_ELEMENT ? node->v.element.tag : GUMBO_TAG_UNKNOWN;
    if (leaving) {
      if (isBlock(tag)) writer.blockBoundary();
      if (tag == GUMBO_TAG_PRE) --preDepth;
      if (tag == GUMBO_TAG_TD || tag == GUMBO_TAG_TH) writer.space();
      continue;
    }
    if (isHidden(tag)) continue;
    if (tag == GUMBO_TAG_BR) writer.lineBreak();
    if (isBlock(tag)) writer.blockBoundary();
    if (tag == GUMBO_TAG_PRE) ++preDepth;
    stack.push_back({node, true});
    const GumboVector& children =
        node->type == GUMBO_NODE_DOCUMENT ? node->v.document.children : node->v.element.children;
    for (unsigned i = children.length; i > 0; --i) {
      stack.push_back({static_cast<const GumboNode*>(children.data[i - 1]), false});
    }
  }
  return std::move(writer).take();
}

}  // namespace

bool HtmlText::isAlreadyPlain(std::string_view text) {
  if (text.empty()) return true;
  if (text.front() == ' ' || text.back() == ' ') return false;
  char previous = '\0';
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    // Only printable ASCII is surely the parser's text unchanged: control
    // characters, DEL and noncharacters such as U+FFFF are its to replace.
    if (c == '<' || c == '&' || byte < 0x20 || byte >= 0x7f) return false;
    if (c == ' ' && previous == ' ') return false;
    previous = c;
  }
  return true;
}

std::optional<std::string> HtmlText::toPlainText(std::string_view html) {
  if (html.size() > kMaxInputBytes || !Utf16::isValidUtf8(html)) return std::nullopt;
  if (isAlreadyPlain(html)) return std::string(html);
  if (static_cast<size_t>(std::count(html.begin(), html.end(), '<')) > kMaxTags) {
    return std::nullopt;
  }
  GumboOutput* output = gumbo_parse_with_options(&kGumboDefaultOptions, html.data(), html.size());
  if (output == nullptr) return std::nullopt;
  auto text = collectText(output->document);
  gumbo_destroy_output(&kGumboDefaultOptions, output);
  return text;
}

}  // namespace quorvel::platform
