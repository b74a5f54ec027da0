#include "tools/qvk/hc_group.h"

#include <memory>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/qvk/article_card.h"
#include "tools/qvk/hc_tables.h"
#include "tools/qvk/int64_argument.h"
#include "tools/qvk/library_call.h"
#include "tools/qvk/overview_tree.h"
#include "tools/qvk/query_builder.h"
#include "velmaro/helpcenter/qvk_help_center_provider.h"

namespace qvk {

namespace {

using velmaro::QVKHelpCenterArticle;
using velmaro::QVKHelpCenterArticleVote;
using velmaro::QVKHelpCenterAttachment;
using velmaro::QVKHelpCenterCategory;
using velmaro::QVKHelpCenterSection;

template <class R>
using Start = LibraryCall::Start<std::vector<R>>;

velmaro::QVKHelpCenterProvider provider(const CommandContext& context) {
  return velmaro::QVKHelpCenterProvider(context.session.core());
}

// With voting off, the provider answers a vote first with this error and
// then, once the request it still sends comes back, a second time.
bool isVotingDisabled(const quorvel::platform::Error& error) {
  return error.domain == "com.quorvel.support" && error.code == 2001;
}

// Prints the records of the call's answer as a table, or as JSON.
template <class R>
int list(CommandContext& context, const Start<R>& start,
         LibraryCall::AnswersTwice answersTwice = nullptr) {
  auto records = LibraryCall::await<std::vector<R>>(context.session, start, answersTwice);
  if (!records) return context.output.error(records.error());
  if (context.output.json()) {
    context.output.list(*records);
  } else {
    context.output.table(HcTables::of(*records));
  }
  return 0;
}

// Like list(), but articles as cards: one article is read, not scanned.
int cards(CommandContext& context, const Start<QVKHelpCenterArticle>& start) {
  auto articles = LibraryCall::await<std::vector<QVKHelpCenterArticle>>(context.session, start);
  if (!articles) return context.output.error(articles.error());
  if (context.output.json()) {
    context.output.list(*articles);
    return 0;
  }
  for (const auto& article : *articles) ArticleCard::print(context.output.text(), article);
  context.output.text().flush();
  return 0;
}

}  // namespace

void HcGroup::declare(CLI::App& root) {
  auto* hc = root.add_subcommand("hc",
                                 "The Help Center: categories, sections, articles, "
                                 "search, suggestions, votes");
  hc->require_subcommand(1);
  declareBrowsing(hc);
  declareOverview(hc);
  declareSearching(hc);
  declareAttachmentsAndVotes(hc);
}

void HcGroup::id(CLI::App* command, const char* name, const char* description) {
  command->add_option(name, arguments_.id, description)
      ->required()
      ->check(Int64Argument::inRange());
}

void HcGroup::textId(CLI::App* command, const char* name, const char* description) {
  command->add_option(name, arguments_.textId, description)->required();
}

void HcGroup::query(CLI::App* command) {
  command->add_option("QUERY", arguments_.query, "The search text")->required();
}

void HcGroup::labelOption(CLI::App* command) {
  command->add_option("--label", arguments_.labels, "An article label (repeatable)")
      ->type_name("L")
      ->allow_extra_args(false);
}

void HcGroup::paging(CLI::App* command) {
  command->add_option("--page", arguments_.page, "Page number")
      ->type_name("N")
      ->check(CLI::PositiveNumber)
      ->check(Int64Argument::inRange());
  command->add_option("--per-page", arguments_.perPage, "Results per page")
      ->type_name("N")
      ->check(CLI::PositiveNumber)
      ->check(Int64Argument::inRange());
}

void HcGroup::declareBrowsing(CLI::App* hc) {
  command(hc, "categories", "List the categories", &HcGroup::categories);
  id(command(hc, "category", "Show one category", &HcGroup::category), "ID", "Category id");
  id(command(hc, "sections", "List the sections of a category", &HcGroup::sections), "CATEGORY_ID",
     "Category id");
  id(command(hc, "section", "Show one section", &HcGroup::section), "ID", "Section id");

  auto* articles =
      command(hc, "articles", "List the articles of a section", &HcGroup::sectionArticles);
  id(articles, "SECTION_ID", "Section id");
  labelOption(articles);

  command(hc, "articles-by-labels", "List the articles with these labels",
          &HcGroup::articlesByLabels)
      ->add_option("LABEL", arguments_.labels, "Article labels")
      ->required();

  id(command(hc, "article", "Show an article (and record the view)", &HcGroup::article), "ID",
     "Article id");
  paging(
      command(hc, "flat", "List all articles, newest first, one page at a time", &HcGroup::flat));
}

void HcGroup::declareOverview(CLI::App* hc) {
  auto* overview =
      command(hc, "overview", "Show the article tree of the Help Center", &HcGroup::overview);
  auto* sections = overview
                       ->add_option("--sections", arguments_.sectionIds,
                                    "Only these sections (comma-separated ids)")
                       ->delimiter(',')
                       ->type_name("ID,ID")
                       ->check(Int64Argument::inRange());
  auto* categories = overview
                         ->add_option("--categories", arguments_.categoryIds,
                                      "Only these categories (comma-separated ids)")
                         ->delimiter(',')
                         ->type_name("ID,ID")
                         ->check(Int64Argument::inRange());
  sections->excludes(categories);
  labelOption(overview);
}

void HcGroup::declareSearching(CLI::App* hc) {
  auto* search = command(hc, "search", "Search the articles (a search object)", &HcGroup::search);
  query(search);
  labelOption(search);
  search->add_option("--category", arguments_.categoryIds, "Only this category (repeatable)")
      ->type_name("ID")
      ->check(Int64Argument::inRange())
      ->allow_extra_args(false);
  search->add_option("--section", arguments_.sectionIds, "Only this section (repeatable)")
      ->type_name("ID")
      ->check(Int64Argument::inRange())
      ->allow_extra_args(false);
  paging(search);

  auto* searchQuery = command(hc, "search-query", "Search the articles by query (and labels)",
                              &HcGroup::searchQuery);
  query(searchQuery);
  labelOption(searchQuery);

  auto* suggest =
      command(hc, "suggest", "Suggest articles for a request being written", &HcGroup::suggest);
  query(suggest);
  labelOption(suggest);
  suggest->add_option("--category", arguments_.categoryId, "Only this category")
      ->type_name("ID")
      ->check(Int64Argument::inRange());
  suggest->add_option("--section", arguments_.sectionId, "Only this section")
      ->type_name("ID")
      ->check(Int64Argument::inRange());
}

void HcGroup::declareAttachmentsAndVotes(CLI::App* hc) {
  id(command(hc, "attachments", "List an article's attachments", &HcGroup::attachments),
     "ARTICLE_ID", "Article id");
  textId(command(hc, "upvote", "Vote an article up", &HcGroup::upvote), "ARTICLE_ID", "Article id");
  textId(command(hc, "downvote", "Vote an article down", &HcGroup::downvote), "ARTICLE_ID",
         "Article id");
  textId(command(hc, "unvote", "Remove a vote", &HcGroup::unvote), "VOTE_ID", "Vote id");
}

int HcGroup::categories(CommandContext& context) const {
  return list<QVKHelpCenterCategory>(
      context, [&](auto cb) { provider(context).getCategoriesWithCallback(std::move(cb)); });
}

int HcGroup::category(CommandContext& context) const {
  return list<QVKHelpCenterCategory>(context, [&](auto cb) {
    provider(context).getCategoryWithId(arguments_.id.value_or(0), std::move(cb));
  });
}

int HcGroup::sections(CommandContext& context) const {
  return list<QVKHelpCenterSection>(context, [&](auto cb) {
    provider(context).getSectionsWithCategoryId(arguments_.id.value_or(0), std::move(cb));
  });
}

int HcGroup::section(CommandContext& context) const {
  return list<QVKHelpCenterSection>(context, [&](auto cb) {
    provider(context).getSectionWithId(arguments_.id.value_or(0), std::move(cb));
  });
}

int HcGroup::sectionArticles(CommandContext& context) const {
  const auto sectionId = arguments_.id.value_or(0);
  return list<QVKHelpCenterArticle>(context, [&](auto cb) {
    if (arguments_.labels) {
      provider(context).getArticlesWithSectionId(sectionId, arguments_.labels, std::move(cb));
    } else {
      provider(context).getArticlesWithSectionId(sectionId, std::move(cb));
    }
  });
}

int HcGroup::articlesByLabels(CommandContext& context) const {
  return list<QVKHelpCenterArticle>(context, [&](auto cb) {
    provider(context).getArticlesByLabels(arguments_.labels, std::move(cb));
  });
}

int HcGroup::article(CommandContext& context) const {
  return cards(context, [&](auto cb) {
    provider(context).getArticleWithId(arguments_.id.value_or(0), std::move(cb));
  });
}

int HcGroup::flat(CommandContext& context) const {
  auto query = QueryBuilder::listArticles(arguments_);
  return list<velmaro::QVKHelpCenterFlatArticle>(context, [&](auto cb) {
    if (query) {
      provider(context).getFlatArticles(*query, std::move(cb));
    } else {
      provider(context).getFlatArticlesWithCallback(std::move(cb));
    }
  });
}

int HcGroup::overview(CommandContext& context) const {
  auto tree = LibraryCall::await<OverviewTree::Categories>(context.session, [&](auto cb) {
    provider(context).getHelpCenterOverviewWithHelpCenterOverviewModel(
        QueryBuilder::overview(arguments_), std::move(cb));
  });
  if (!tree) return context.output.error(tree.error());
  if (context.output.json()) {
    context.output.document(OverviewTree::toJson(*tree));
  } else {
    OverviewTree::print(context.output.text(), *tree);
    context.output.text().flush();
  }
  return 0;
}

int HcGroup::search(CommandContext& context) const {
  auto query = std::make_shared<velmaro::QVKHelpCenterSearch>(QueryBuilder::search(arguments_));
  return list<QVKHelpCenterArticle>(
      context, [&](auto cb) { provider(context).searchArticles(query, std::move(cb)); });
}

int HcGroup::searchQuery(CommandContext& context) const {
  return list<QVKHelpCenterArticle>(context, [&](auto cb) {
    if (arguments_.labels) {
      provider(context).searchForArticlesUsingQuery(arguments_.query, arguments_.labels,
                                                    std::move(cb));
    } else {
      provider(context).searchForArticlesUsingQuery(arguments_.query, std::move(cb));
    }
  });
}

int HcGroup::suggest(CommandContext& context) const {
  auto deflection =
      std::make_shared<velmaro::QVKHelpCenterDeflection>(QueryBuilder::deflection(arguments_));
  return list<velmaro::QVKHelpCenterSimpleArticle>(context, [&](auto cb) {
    provider(context).getArticleSuggestions(deflection, std::move(cb));
  });
}

int HcGroup::attachments(CommandContext& context) const {
  return list<QVKHelpCenterAttachment>(context, [&](auto cb) {
    provider(context).getAttachmentWithArticleId(arguments_.id.value_or(0), std::move(cb));
  });
}

int HcGroup::upvote(CommandContext& context) const {
  return list<QVKHelpCenterArticleVote>(
      context,
      [&](auto cb) { provider(context).upVoteArticleWithId(arguments_.textId, std::move(cb)); },
      isVotingDisabled);
}

int HcGroup::downvote(CommandContext& context) const {
  return list<QVKHelpCenterArticleVote>(
      context,
      [&](auto cb) { provider(context).downVoteArticleWithId(arguments_.textId, std::move(cb)); },
      isVotingDisabled);
}

int HcGroup::unvote(CommandContext& context) const {
  auto answer = LibraryCall::await<velmaro::QVKDispatcherResponse>(
      context.session,
      [&](auto cb) { provider(context).removeVoteWithId(arguments_.textId, std::move(cb)); },
      isVotingDisabled);
  if (!answer) return context.output.error(answer.error());
  const long status = answer->response ? answer->response->statusCode() : 0;
  const auto voteId = arguments_.textId.value_or("");
  if (context.output.json()) {
    context.output.document(boost::json::object{{"removed", voteId}, {"status", status}});
  } else {
    context.output.text() << "Vote " << voteId << " removed (HTTP " << status << ")\n";
    context.output.text().flush();
  }
  return 0;
}

}  // namespace qvk
