#include "tools/qvk/article_card.h"

#include <string>
#include <vector>

#include "quorvel/platform/html_text.h"
#include "tools/qvk/terminal_text.h"
#include "velmaro/util/qvk_date_util.h"

namespace qvk {

namespace {

const char* const kSeparator = " \xC2\xB7 ";  // middle dot

std::string facts(const velmaro::QVKHelpCenterArticle& a) {
  std::vector<std::string> parts;
  if (a.identifier) parts.push_back("article " + std::to_string(*a.identifier));
  if (a.articleParents) parts.push_back(*a.articleParents);
  if (a.author_name) parts.push_back("by " + *a.author_name);
  if (a.created_at) {
    parts.push_back(velmaro::QVKDateUtil::stringFromDate(*a.created_at).substr(0, 10));
  }
  if (a.voteSum && a.voteCount) {
    parts.push_back("+" + std::to_string(a.getUpvoteCount()) + " -" +
                    std::to_string(a.getDownvoteCount()) + " votes");
  }
  std::string line;
  for (const auto& part : parts) line += (line.empty() ? "" : kSeparator) + part;
  return line;
}

}  // namespace

void ArticleCard::print(std::ostream& out, const velmaro::QVKHelpCenterArticle& article) {
  out << TerminalText::printable(article.title.value_or("(untitled)")) << '\n';
  out << TerminalText::printable(facts(article)) << '\n';
  if (article.labelNames && !article.labelNames->empty()) {
    out << "labels:";
    for (const auto& label : *article.labelNames) out << ' ' << TerminalText::printable(label);
    out << '\n';
  }
  if (article.htmlUrl) out << TerminalText::printable(*article.htmlUrl) << '\n';
  if (article.body && !article.body->empty()) {
    auto body = quorvel::platform::HtmlText::toPlainText(*article.body);
    out << '\n' << TerminalText::printable(body.value_or(*article.body), true) << '\n';
  }
}

}  // namespace qvk
