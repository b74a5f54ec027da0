#include "tools/qvk/hc_commands.h"

#include <boost/json/value_from.hpp>

#include "tools/qvk/article_card.h"
#include "tools/qvk/client_errors.h"
#include "tools/qvk/overview_tree.h"
#include "tools/qvk/query_builder.h"
#include "tools/qvk/record_tables.h"

namespace qvk {

namespace {

using velmaro::QVKHelpCenterArticle;
using velmaro::QVKHelpCenterArticleVote;
using velmaro::QVKHelpCenterAttachment;
using velmaro::QVKHelpCenterCategory;
using velmaro::QVKHelpCenterSection;

// With voting off, the provider answers a vote first with this error and
// then, once the request it still sends comes back, a second time.
bool isVotingDisabled(const std::optional<quorvel::platform::Error>& error) {
  return error && error->domain == "com.quorvel.support" && error->code == 2001;
}

}  // namespace

template <class R>
bool HcCommands::await(const Answer<R>& answer, int count) {
  return session_.waitUntil([&] { return answer.count() >= count; });
}

template <class R>
int HcCommands::list(const Start<R>& start) {
  Answer<std::vector<R>> answer;
  start(answer.callback());
  if (!await(answer)) return output_.error(ClientErrors::noAnswer(session_.answerTimeout()));
  if (answer.error()) return output_.error(*answer.error());
  const auto records = answer.value().value_or(std::vector<R>{});
  if (output_.json()) {
    output_.document(boost::json::value_from(records));
  } else {
    output_.table(RecordTables::of(records));
  }
  return 0;
}

int HcCommands::articles(const Start<QVKHelpCenterArticle>& start) {
  Answer<std::vector<QVKHelpCenterArticle>> answer;
  start(answer.callback());
  if (!await(answer)) return output_.error(ClientErrors::noAnswer(session_.answerTimeout()));
  if (answer.error()) return output_.error(*answer.error());
  const auto records = answer.value().value_or(std::vector<QVKHelpCenterArticle>{});
  if (output_.json()) {
    output_.document(boost::json::value_from(records));
    return 0;
  }
  for (const auto& article : records) ArticleCard::print(output_.text(), article);
  output_.text().flush();
  return 0;
}

int HcCommands::overview(const HcArguments& arguments) {
  Answer<OverviewTree::Categories> answer;
  provider().getHelpCenterOverviewWithHelpCenterOverviewModel(QueryBuilder::overview(arguments),
                                                              answer.callback());
  if (!await(answer)) return output_.error(ClientErrors::noAnswer(session_.answerTimeout()));
  if (answer.error()) return output_.error(*answer.error());
  const auto tree = answer.value().value_or(OverviewTree::Categories{});
  if (output_.json()) {
    output_.document(OverviewTree::toJson(tree));
  } else {
    OverviewTree::print(output_.text(), tree);
    output_.text().flush();
  }
  return 0;
}

int HcCommands::vote(const Start<QVKHelpCenterArticleVote>& start) {
  Answer<std::vector<QVKHelpCenterArticleVote>> answer;
  start(answer.callback());
  if (!await(answer)) return output_.error(ClientErrors::noAnswer(session_.answerTimeout()));
  if (isVotingDisabled(answer.error())) {
    // Report the first answer, but leave nothing in flight behind us.
    await(answer, 2);
    return output_.error(*answer.error());
  }
  if (answer.error()) return output_.error(*answer.error());
  const auto votes = answer.value().value_or(std::vector<QVKHelpCenterArticleVote>{});
  if (output_.json()) {
    output_.document(boost::json::value_from(votes));
  } else {
    output_.table(RecordTables::of(votes));
  }
  return 0;
}

int HcCommands::unvote(const HcArguments& arguments) {
  Answer<velmaro::QVKDispatcherResponse> answer;
  provider().removeVoteWithId(arguments.textId, answer.callback());
  if (!await(answer)) return output_.error(ClientErrors::noAnswer(session_.answerTimeout()));
  if (isVotingDisabled(answer.error())) await(answer, 2);
  if (answer.error()) return output_.error(*answer.error());
  long status = 0;
  if (answer.value() && answer.value()->response) status = answer.value()->response->statusCode();
  if (output_.json()) {
    output_.document(
        boost::json::object{{"removed", arguments.textId.value_or("")}, {"status", status}});
  } else {
    output_.text() << "Vote " << arguments.textId.value_or("") << " removed (HTTP " << status
                   << ")\n";
    output_.text().flush();
  }
  return 0;
}

int HcCommands::search(const HcArguments& arguments) {
  auto query = std::make_shared<velmaro::QVKHelpCenterSearch>(QueryBuilder::search(arguments));
  return list<QVKHelpCenterArticle>(
      [&](auto cb) { provider().searchArticles(query, std::move(cb)); });
}

int HcCommands::searchQuery(const HcArguments& arguments) {
  return list<QVKHelpCenterArticle>([&](auto cb) {
    if (arguments.labels) {
      provider().searchForArticlesUsingQuery(arguments.query, arguments.labels, std::move(cb));
    } else {
      provider().searchForArticlesUsingQuery(arguments.query, std::move(cb));
    }
  });
}

int HcCommands::suggest(const HcArguments& arguments) {
  auto deflection =
      std::make_shared<velmaro::QVKHelpCenterDeflection>(QueryBuilder::deflection(arguments));
  return list<velmaro::QVKHelpCenterSimpleArticle>(
      [&](auto cb) { provider().getArticleSuggestions(deflection, std::move(cb)); });
}

int HcCommands::flat(const HcArguments& arguments) {
  auto query = QueryBuilder::listArticles(arguments);
  return list<velmaro::QVKHelpCenterFlatArticle>([&](auto cb) {
    if (query) {
      provider().getFlatArticles(*query, std::move(cb));
    } else {
      provider().getFlatArticlesWithCallback(std::move(cb));
    }
  });
}

int HcCommands::sectionArticles(const HcArguments& arguments) {
  auto sectionId = arguments.id.value_or(0);
  return list<QVKHelpCenterArticle>([&](auto cb) {
    if (arguments.labels) {
      provider().getArticlesWithSectionId(sectionId, arguments.labels, std::move(cb));
    } else {
      provider().getArticlesWithSectionId(sectionId, std::move(cb));
    }
  });
}

int HcCommands::run(const ParsedCommand& command) {
  const auto& a = command.hc;
  const auto id = a.id.value_or(0);
  switch (command.kind) {
    case CommandKind::hcCategories:
      return list<QVKHelpCenterCategory>(
          [&](auto cb) { provider().getCategoriesWithCallback(std::move(cb)); });
    case CommandKind::hcCategory:
      return list<QVKHelpCenterCategory>(
          [&](auto cb) { provider().getCategoryWithId(id, std::move(cb)); });
    case CommandKind::hcSections:
      return list<QVKHelpCenterSection>(
          [&](auto cb) { provider().getSectionsWithCategoryId(id, std::move(cb)); });
    case CommandKind::hcSection:
      return list<QVKHelpCenterSection>(
          [&](auto cb) { provider().getSectionWithId(id, std::move(cb)); });
    case CommandKind::hcArticles:
      return sectionArticles(a);
    case CommandKind::hcArticlesByLabels:
      return list<QVKHelpCenterArticle>(
          [&](auto cb) { provider().getArticlesByLabels(a.labels, std::move(cb)); });
    case CommandKind::hcArticle:
      return articles([&](auto cb) { provider().getArticleWithId(id, std::move(cb)); });
    case CommandKind::hcFlat:
      return flat(a);
    case CommandKind::hcOverview:
      return overview(a);
    case CommandKind::hcSearch:
      return search(a);
    case CommandKind::hcSearchQuery:
      return searchQuery(a);
    case CommandKind::hcSuggest:
      return suggest(a);
    case CommandKind::hcAttachments:
      return list<QVKHelpCenterAttachment>(
          [&](auto cb) { provider().getAttachmentWithArticleId(id, std::move(cb)); });
    case CommandKind::hcUpvote:
      return vote([&](auto cb) { provider().upVoteArticleWithId(a.textId, std::move(cb)); });
    case CommandKind::hcDownvote:
      return vote([&](auto cb) { provider().downVoteArticleWithId(a.textId, std::move(cb)); });
    case CommandKind::hcUnvote:
      return unvote(a);
    default:
      return 2;
  }
}

}  // namespace qvk
