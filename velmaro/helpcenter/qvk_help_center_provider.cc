#include "velmaro/helpcenter/qvk_help_center_provider.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/serialize.hpp>

#include "quorvel/platform/url_encoding.h"
#include "velmaro/blips/help_center_blips.h"
#include "velmaro/helpcenter/qvk_help_center_parser.h"
#include "velmaro/helpcenter/qvk_help_center_provider_context.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"
#include "velmaro/util/qvk_classic_logger.h"
#include "velmaro/util/qvk_validator.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

namespace {

using quorvel::platform::Error;
using quorvel::platform::UrlEncoding;
using Context = QVKHelpCenterProviderContext;
using Labels = std::optional<std::vector<std::string>>;

std::string joined(const Labels& labels) {
  std::string text;
  if (!labels) return text;
  for (std::size_t i = 0; i < labels->size(); ++i) {
    if (i > 0) text += ",";
    text += (*labels)[i];
  }
  return text;
}

template <class Record>
void answerQvkHelpCenterCallbackOnMainThread(const Context& ctx, QVKHelpCenterCallback<Record> cb,
                                             std::optional<std::vector<Record>> items,
                                             std::optional<Error> error) {
  // Runs once: the records move on to the callback.
  ctx.onMainThread(
      [cb = std::move(cb), items = std::move(items), error = std::move(error)]() mutable {
        if (!cb) {
          QVKClassicLogger::warn("Ignoring attempt to respond on a nil QVKHelpCenterCallback");
          return;
        }
        cb(std::move(items), std::move(error));
      });
}

void answerQvkHelpCenterCategoriesCallbackOnMainThread(
    const Context& ctx, QVKHelpCenterCategoriesCallback cb,
    std::optional<HelpCenterCategoryViewModelContainer::Categories> tree,
    std::optional<Error> error) {
  ctx.onMainThread(
      [cb = std::move(cb), tree = std::move(tree), error = std::move(error)]() mutable {
        if (!cb) {
          QVKClassicLogger::warn(
              "Ignoring attempt to respond on a nil QVKHelpCenterCategoriesCallback");
          return;
        }
        cb(std::move(tree), std::move(error));
      });
}

void answerQvkHelpCenterGenericCallbackOnMainThread(const Context& ctx,
                                                    QVKHelpCenterGenericCallback cb,
                                                    std::optional<QVKDispatcherResponse> result,
                                                    std::optional<Error> error) {
  ctx.onMainThread([cb = std::move(cb), result = std::move(result),
                    error = std::move(error)]() mutable {
    if (!cb) {
      QVKClassicLogger::warn("Ignoring attempt to respond on a nil QVKHelpCenterGenericCallback");
      return;
    }
    cb(std::move(result), std::move(error));
  });
}

// True (and the callback answered with the validation error) when the
// operation must stop before anything is posted or sent.
template <class Record>
bool stopsOnInvalid(const Context& ctx, const VariableBindings& bindings,
                    std::string_view operation, const QVKHelpCenterCallback<Record>& cb) {
  return ctx.shouldStopAfterHandlingParameters(bindings, operation, [&ctx, &cb](Error error) {
    answerQvkHelpCenterCallbackOnMainThread<Record>(ctx, cb, std::nullopt, std::move(error));
  });
}

// One list request of the common flow: notifications, request, parsing.
template <class Record>
struct ListRequest {
  std::string path;  // appended to the base URL as it is
  std::string httpMethod = "GET";
  const char* starting = nullptr;  // posted here unless the caller already did
  const char* success = nullptr;
  std::vector<const char*> failures{QV_HC_RequestError};
  std::function<std::vector<Record>(const boost::json::object&)> parse;
  // Runs on every success before the answer, with the answer's JSON.
  std::function<void(const boost::json::object&)> onAnswer;
};

template <class Record>
void sendList(const Context& ctx, ListRequest<Record> request, QVKHelpCenterCallback<Record> cb) {
  if (request.starting != nullptr) ctx.postToNotificationCenterOnMainThread(request.starting);
  auto urlRequest = ctx.baseRequestWithURL(request.path, request.httpMethod);
  auto onSuccess = [ctx, cb, success = request.success, parse = std::move(request.parse),
                    onAnswer = std::move(request.onAnswer)](QVKDispatcherResponse response) {
    // The answer's JSON lives only while the records are made from it (they
    // copy what they keep), so one arena holds all of it and is let go at
    // once instead of value by value.
    unsigned char firstBlock[4096];
    boost::json::monotonic_resource arena(firstBlock, sizeof firstBlock);
    const auto json = Context::jsonObject(response.data, &arena);
    if (onAnswer) onAnswer(json);
    if (cb) answerQvkHelpCenterCallbackOnMainThread<Record>(ctx, cb, parse(json), std::nullopt);
    ctx.postToNotificationCenterOnMainThread(success);
  };
  auto onError = [ctx, cb, failures = std::move(request.failures)](Error error) {
    answerQvkHelpCenterCallbackOnMainThread<Record>(ctx, cb, std::nullopt, error);
    for (const char* name : failures) ctx.postToNotificationCenterOnMainThread(name, error);
  };
  ctx.executeRequestNoBlock(std::move(urlRequest), std::move(onSuccess), std::move(onError));
}

// A record under `key` of the answer, as a one-element list.
template <class Record>
std::function<std::vector<Record>(const boost::json::object&)> single(
    std::string key, Record (*parseOne)(const boost::json::object&)) {
  return [key = std::move(key), parseOne](const boost::json::object& json) {
    return std::vector<Record>{parseOne(Context::objectAt(json, key))};
  };
}

std::vector<QVKHelpCenterArticle> parseSearchResults(const boost::json::object& json) {
  return QVKHelpCenterParser(json).parseArticleSearchResults(json);
}

// The operations proper. They take the context by value so that nothing in
// flight refers to the provider. A locale that could not be resolved (no
// settings and no preferred language) goes into paths as empty text, the same
// as the explicit forms receive it from the convenience forms.
struct Operations {
  static void categories(const Context& ctx, const std::string& locale,
                         QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                       "getCategoriesWithLocale", cb))
      return;
    ListRequest<QVKHelpCenterCategory> request;
    request.path =
        StringFormat::format("/api/v2/help_center/%@/categories.json?per_page=100", locale);
    request.starting = QV_HC_CategoriesStarting;
    request.success = QV_HC_CategoriesUpdated;
    request.parse = &QVKHelpCenterCategory::parseCategories;
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void sections(const Context& ctx, std::int64_t categoryId, const std::string& locale,
                       QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
    if (stopsOnInvalid(
            ctx, qvk_NilSafeNSDictionaryOfVariableBindings("categoryId, callback", categoryId, cb),
            "getSectionsWithCategoryId", cb))
      return;
    ListRequest<QVKHelpCenterSection> request;
    request.path = StringFormat::format(
        "/api/v2/help_center/%@/categories/%@/sections.json?per_page=100", locale, categoryId);
    request.starting = QV_HC_SectionsStarting;
    request.success = QV_HC_SectionsUpdated;
    request.parse = &QVKHelpCenterSection::parseSections;
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void articlesOfSection(const Context& ctx, std::int64_t sectionId, const Labels& labels,
                                const std::string& locale,
                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
    if (stopsOnInvalid(ctx,
                       qvk_NilSafeNSDictionaryOfVariableBindings("labels, callback", labels, cb),
                       "getArticlesWithSectionId", cb))
      return;
    const auto path = StringFormat::format(
        "/api/v2/help_center/%@/sections/%@/articles.json?per_page=100&include=users&"
        "respect_sanitization_settings=true&label_names=%@",
        locale, sectionId, joined(labels));
    ListRequest<QVKHelpCenterArticle> request;
    // The whole path, separators included, goes through the query escaping.
    request.path = UrlEncoding::encode(path, UrlEncoding::CharacterSet::urlQueryAllowed);
    request.starting = QV_HC_ArticlesStarting;
    request.success = QV_HC_ArticlesUpdated;
    request.parse = [](const boost::json::object& json) {
      return QVKHelpCenterParser(json).parseArticles(json);
    };
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void search(const Context& ctx, const std::shared_ptr<QVKHelpCenterSearch>& search,
                     const std::string& locale, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
    if (stopsOnInvalid(ctx,
                       qvk_NilSafeNSDictionaryOfVariableBindings("search,callback", search, cb),
                       "searchArticles", cb))
      return;
    // Appended on every call, to the caller's object: a reused search sends
    // the names more than once.
    if (!search->sideLoads) search->sideLoads.emplace();
    for (const char* name : {"users", "categories", "sections"}) search->sideLoads->push_back(name);
    ctx.postToNotificationCenterOnMainThread(QV_HC_SearchStarting);
    HelpCenterBlips::blipSearchQuery(search->query.value_or(""));
    ListRequest<QVKHelpCenterArticle> request;
    request.path = StringFormat::format(
        "/api/v2/help_center/articles/search.json%@&origin=mobile_sdk&"
        "respect_sanitization_settings=true",
        search->queryStringWithLocale(locale));
    request.success = QV_HC_SearchSuccess;
    request.parse = &parseSearchResults;
    request.onAnswer = [query = search->query](const boost::json::object& json) {
      Context::cacheLastSearch(query, json);
    };
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void searchByQuery(const Context& ctx, const std::optional<std::string>& query,
                            const std::string& locale,
                            QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("query,callback", query, cb),
                       "searchForArticlesUsingQuery", cb))
      return;
    ListRequest<QVKHelpCenterArticle> request;
    request.path = StringFormat::format(
        "/api/v2/help_center/articles/search.json?query=%@&include=sections,categories,users&"
        "per_page=100&locale=%@&origin=mobile_sdk&respect_sanitization_settings=true",
        UrlEncoding::legacyEscape(*query), locale);
    request.starting = QV_HC_SearchStarting;
    request.success = QV_HC_SearchSuccess;
    request.parse = &parseSearchResults;
    sendList(ctx, std::move(request), std::move(cb));
  }

  // The given locale is not used: this search always resolves it again, after
  // its start notification.
  static void searchByQueryAndLabels(const Context& ctx, const std::optional<std::string>& query,
                                     const Labels& labels,
                                     QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
    if (stopsOnInvalid(
            ctx,
            qvk_NilSafeNSDictionaryOfVariableBindings("query,labels,callback", query, labels, cb),
            "searchForArticlesUsingQuery:andLabels", cb))
      return;
    ctx.postToNotificationCenterOnMainThread(QV_HC_SearchStarting);
    ctx.localeForRequest([ctx, query, labels, cb](std::optional<std::string> locale) {
      ListRequest<QVKHelpCenterArticle> request;
      request.path = StringFormat::format(
          "/api/v2/help_center/articles/search.json?query=%@&include=sections,categories,users&"
          "per_page=100&label_names=%@&locale=%@&origin=mobile_sdk&"
          "respect_sanitization_settings=true",
          UrlEncoding::legacyEscape(*query), joined(labels), locale.value_or(""));
      request.success = QV_HC_SearchSuccess;
      request.parse = &parseSearchResults;
      request.onAnswer = [query](const boost::json::object& json) {
        Context::cacheLastSearch(query, json);
      };
      sendList(ctx, std::move(request), cb);
    });
  }

  static void articlesByLabels(const Context& ctx, const Labels& labels, const std::string& locale,
                               QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
    if (stopsOnInvalid(ctx,
                       qvk_NilSafeNSDictionaryOfVariableBindings("labels,callback", labels, cb),
                       "getArticlesByLabels", cb))
      return;
    ListRequest<QVKHelpCenterArticle> request;
    // Labels go in as they are: one with a blank makes no URL, and the
    // dispatcher refuses the request.
    request.path = StringFormat::format(
        "/api/v2/help_center/%@/articles.json?include=categories,sections,users&label_names=%@&"
        "sort_by=created_at&sort_order=desc&respect_sanitization_settings=true&per_page=100",
        locale, joined(labels));
    request.starting = QV_HC_ArticlesStarting;
    request.success = QV_HC_ArticlesUpdated;
    request.parse = [](const boost::json::object& json) {
      return QVKHelpCenterParser(json).parseArticlesWithRootKey(json, "articles");
    };
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void articleById(const Context& ctx, std::int64_t articleId, const std::string& locale,
                          QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                       "getArticleWithId", cb))
      return;
    ctx.postToNotificationCenterOnMainThread(QV_HC_ArticleByIdStarting);
    auto urlRequest = ctx.baseRequest(StringFormat::format(
        "/hc/api/mobile/%@/articles/%@.json?include=users&respect_sanitization_settings=true",
        locale, articleId));
    auto onSuccess = [ctx, cb](QVKDispatcherResponse response) {
      if (cb) {
        const auto list = asArticles(Context::jsonObject(response.data));
        auto items = QVKHelpCenterParser::initWithDictionary(list).parseArticles(list);
        answerQvkHelpCenterCallbackOnMainThread<QVKHelpCenterArticle>(ctx, cb, items, std::nullopt);
        if (!items.empty()) {
          recordArticleView(ctx, items.front(), [](auto, auto) {});
        }
      }
      ctx.postToNotificationCenterOnMainThread(QV_HC_ArticleByIdSuccess);
    };
    auto onError = [ctx, cb](Error error) {
      answerQvkHelpCenterCallbackOnMainThread<QVKHelpCenterArticle>(ctx, cb, std::nullopt, error);
      ctx.postToNotificationCenterOnMainThread(QV_HC_RequestError, error);
    };
    ctx.executeRequestNoBlock(std::move(urlRequest), std::move(onSuccess), std::move(onError));
  }

  // {"article": a, "users": u} as the list answer {"articles": [a], "users": u},
  // so that the list parser fills the author.
  static boost::json::object asArticles(const boost::json::object& answer) {
    boost::json::array articles;
    if (const auto* article = answer.if_contains("article")) articles.push_back(*article);
    boost::json::object list{{"articles", std::move(articles)}};
    const auto* users = answer.if_contains("users");
    list["users"] = users != nullptr ? *users : boost::json::array();
    return list;
  }

  static void suggestions(const Context& ctx,
                          const std::shared_ptr<QVKHelpCenterDeflection>& deflection,
                          const std::string& locale,
                          QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb) {
    if (stopsOnInvalid(ctx,
                       qvk_NilSafeNSDictionaryOfVariableBindings("search,callback", deflection, cb),
                       "getArticleSuggestions", cb))
      return;
    ListRequest<QVKHelpCenterSimpleArticle> request;
    request.path = StringFormat::format(
        "/api/mobile/help_center/search/deflect.json%@&respect_sanitization_settings=true",
        deflection->queryStringWithLocale(locale));
    request.starting = QV_HC_DeflectionSearchStarting;
    request.success = QV_HC_DeflectionSearchSuccess;
    request.failures = {QV_HC_DeflectionSearchError};
    request.parse = &QVKHelpCenterSimpleArticle::parseDeflectionSearchResults;
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void sectionById(const Context& ctx, std::int64_t sectionId, const std::string& locale,
                          QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                       "getSectionWithId", cb))
      return;
    ListRequest<QVKHelpCenterSection> request;
    request.path =
        StringFormat::format("/api/v2/help_center/%@/sections/%@.json", locale, sectionId);
    request.starting = QV_HC_SectionByIdStarting;
    request.success = QV_HC_SectionByIdSuccess;
    request.parse = single<QVKHelpCenterSection>("section", &QVKHelpCenterSection::parseSection);
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void categoryById(const Context& ctx, std::int64_t categoryId, const std::string& locale,
                           QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                       "getCategoryWithId", cb))
      return;
    ListRequest<QVKHelpCenterCategory> request;
    request.path =
        StringFormat::format("/api/v2/help_center/%@/categories/%@.json", locale, categoryId);
    request.starting = QV_HC_CategoryByIdStarting;
    request.success = QV_HC_CategoryByIdSuccess;
    request.parse =
        single<QVKHelpCenterCategory>("category", &QVKHelpCenterCategory::parseCategory);
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void flatArticles(const Context& ctx, const std::string& locale, std::int64_t page,
                           std::int64_t perPage,
                           QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                       "getFlatArticlesWithLocale", cb))
      return;
    ListRequest<QVKHelpCenterFlatArticle> request;
    request.path = StringFormat::format(
        "/api/v2/help_center/%@/articles.json?include=sections,categories,users&"
        "sort_by=created_at&sort_order=desc&per_page=%ld&page=%ld",
        locale, perPage, page);
    request.starting = QV_HC_ArticlesStarting;
    request.success = QV_HC_ArticlesUpdated;
    request.parse = [](const boost::json::object& json) {
      return QVKHelpCenterParser(json).parseFlatArticles(json);
    };
    sendList(ctx, std::move(request), std::move(cb));
  }

  static void overview(const Context& ctx, const QVKHelpCenterOverviewContentModel& model,
                       QVKHelpCenterCategoriesCallback cb) {
    if (ctx.shouldStopAfterHandlingParameters(
            qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
            "getHelpCenterOverviewWithHelpCenterOverviewModel", [&ctx, &cb](Error error) {
              answerQvkHelpCenterCategoriesCallbackOnMainThread(ctx, cb, std::nullopt,
                                                                std::move(error));
            }))
      return;
    ctx.localeForRequest([ctx, query = model.formQueryString(),
                          cb](std::optional<std::string> locale) {
      auto urlRequest = ctx.baseRequest(StringFormat::format(
          "/hc/api/mobile/%@/article_tree.json%@", locale.value_or(""), query));
      auto onSuccess = [ctx, cb](QVKDispatcherResponse response) {
        auto tree = HelpCenterCategoryViewModelContainer::parseWithData(response.data.value_or(""));
        if (tree.ok()) {
          answerQvkHelpCenterCategoriesCallbackOnMainThread(ctx, cb, std::move(tree).value(),
                                                            std::nullopt);
        } else {
          answerQvkHelpCenterCategoriesCallbackOnMainThread(ctx, cb, std::nullopt, tree.error());
        }
      };
      auto onError = [ctx, cb](Error error) {
        answerQvkHelpCenterCategoriesCallbackOnMainThread(ctx, cb, std::nullopt, std::move(error));
      };
      ctx.executeRequestNoBlock(std::move(urlRequest), std::move(onSuccess), std::move(onError));
    });
  }

  static void attachments(const Context& ctx, std::int64_t articleId,
                          QVKHelpCenterCallback<QVKHelpCenterAttachment> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                       "getAttachmentWithArticleId", cb))
      return;
    ctx.postToNotificationCenterOnMainThread(QV_HC_AttachmentsStarting);
    ctx.localeForRequest([ctx, articleId, cb](std::optional<std::string> locale) {
      ListRequest<QVKHelpCenterAttachment> request;
      // "&per_page" without a "?" is what the service expects on this path.
      request.path = StringFormat::format(
          "/api/v2/help_center/%@/articles/%@/attachments/block.json&per_page=100",
          locale.value_or(""), articleId);
      request.success = QV_HC_AttachmentsUpdated;
      request.failures = {QV_HC_AttachmentsErrored, QV_HC_RequestError};
      request.parse = &QVKHelpCenterAttachment::parseAttachments;
      sendList(ctx, std::move(request), cb);
    });
  }

  static void recordArticleView(const Context& ctx,
                                const std::optional<QVKHelpCenterArticle>& article,
                                QVKHelpCenterGenericCallback cb) {
    if (ctx.shouldStopAfterHandlingParameters(
            qvk_NilSafeNSDictionaryOfVariableBindings("article, callback", article, cb),
            "submitRecordArticleView", [&ctx, &cb](Error error) {
              answerQvkHelpCenterGenericCallbackOnMainThread(ctx, cb, std::nullopt,
                                                             std::move(error));
            }))
      return;
    ctx.localeForRequest([ctx, article = *article, cb](std::optional<std::string> locale) {
      auto urlRequest = ctx.baseRequestWithURL(
          StringFormat::format("/api/v2/help_center/%@/articles/%@/stats/view.json",
                               locale.value_or(""), article.identifier),
          "POST");
      if (auto body = QVKHelpCenterSessionCache::recordArticleViewRequestJson()) {
        urlRequest.httpBody = boost::json::serialize(*body);
      }
      auto onSuccess = [ctx, article, cb, locale](QVKDispatcherResponse response) {
        QVKHelpCenterSessionCache::unsetUniqueSearchResultClick();
        answerQvkHelpCenterGenericCallbackOnMainThread(ctx, cb, std::move(response), std::nullopt);
        HelpCenterBlips::blipArticleViewed(article.title.value_or(""), article.htmlUrl.value_or(""),
                                           locale.value_or(""), article.identifier.value_or(0),
                                           article.locale.value_or(""));
      };
      auto onError = [ctx, cb](Error error) {
        answerQvkHelpCenterGenericCallbackOnMainThread(ctx, cb, std::nullopt, std::move(error));
      };
      ctx.executeRequestNoBlock(std::move(urlRequest), std::move(onSuccess), std::move(onError));
    });
  }

  struct VoteKind {
    const char* path;
    long value;
    const char* starting;
    const char* success;
    const char* failure;
  };

  static void vote(const Context& ctx, const std::optional<std::string>& articleId,
                   const VoteKind& kind, QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb) {
    if (stopsOnInvalid(ctx, qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                       kind.value > 0 ? "upVoteArticleWithId" : "downVoteArticleWithId", cb))
      return;
    Context::articleVotingAvailable([ctx, articleId, kind, cb](std::optional<Error> error) {
      if (error) {
        answerQvkHelpCenterCallbackOnMainThread<QVKHelpCenterArticleVote>(ctx, cb, std::nullopt,
                                                                          std::move(error));
        return;
      }
      ListRequest<QVKHelpCenterArticleVote> request;
      request.path = StringFormat::format(kind.path, articleId);
      request.httpMethod = "POST";
      request.starting = kind.starting;
      request.success = kind.success;
      request.failures = {kind.failure};
      request.parse =
          single<QVKHelpCenterArticleVote>("vote", &QVKHelpCenterArticleVote::parseArticleVote);
      request.onAnswer = [articleId, value = kind.value](const boost::json::object&) {
        HelpCenterBlips::blipArticleVote(articleId.value_or(""), value);
      };
      sendList(ctx, std::move(request), cb);
    });
  }

  static void removeVote(const Context& ctx, const std::optional<std::string>& voteId,
                         QVKHelpCenterGenericCallback cb) {
    if (ctx.shouldStopAfterHandlingParameters(
            qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb), "removeVoteWithId",
            [&ctx, &cb](Error error) {
              answerQvkHelpCenterGenericCallbackOnMainThread(ctx, cb, std::nullopt,
                                                             std::move(error));
            }))
      return;
    Context::articleVotingAvailable([ctx, voteId, cb](std::optional<Error> error) {
      if (error) {
        answerQvkHelpCenterGenericCallbackOnMainThread(ctx, cb, std::nullopt, std::move(error));
        return;
      }
      ctx.postToNotificationCenterOnMainThread(QV_HC_VoteDeleteStarting);
      auto urlRequest = ctx.baseRequestWithURL(
          StringFormat::format("/api/v2/help_center/votes/%@.json", voteId), "DELETE");
      auto onSuccess = [ctx, cb](QVKDispatcherResponse response) {
        answerQvkHelpCenterGenericCallbackOnMainThread(ctx, cb, std::move(response), std::nullopt);
        ctx.postToNotificationCenterOnMainThread(QV_HC_VoteDeleteSuccess);
      };
      auto onError = [ctx, cb](Error failure) {
        answerQvkHelpCenterGenericCallbackOnMainThread(ctx, cb, std::nullopt, failure);
        ctx.postToNotificationCenterOnMainThread(QV_HC_VoteDeleteError, failure);
      };
      ctx.executeRequestNoBlock(std::move(urlRequest), std::move(onSuccess), std::move(onError));
    });
  }
};

constexpr Operations::VoteKind kUpVote{"/api/v2/help_center/articles/%@/up.json", 1,
                                       QV_HC_UpvoteStarting, QV_HC_UpvoteSuccess,
                                       QV_HC_UpvoteError};
constexpr Operations::VoteKind kDownVote{"/api/v2/help_center/articles/%@/down.json", -1,
                                         QV_HC_DownvoteStarting, QV_HC_DownvoteSuccess,
                                         QV_HC_DownvoteError};

// Each convenience form resolves the locale, then runs the explicit form's
// operation with a copy of the context, never with the provider itself.
Context contextOf(const QVKHelpCenterProvider& provider) {
  return Context(provider.quorvel, &provider);
}

}  // namespace

QVKHelpCenterProvider::QVKHelpCenterProvider() : QVKProvider() {}

QVKHelpCenterProvider::QVKHelpCenterProvider(std::shared_ptr<quorvel::Quorvel> quorvel)
    : QVKProvider(std::move(quorvel)) {}

void QVKHelpCenterProvider::getCategoriesWithCallback(
    QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::categories(ctx, locale.value_or(""), cb);
  });
}

void QVKHelpCenterProvider::getCategoriesWithLocale(
    std::string locale, QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  Operations::categories(contextOf(*this), locale, std::move(cb));
}

void QVKHelpCenterProvider::getSectionsWithCategoryId(
    std::int64_t categoryId, QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, categoryId, cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::sections(ctx, categoryId, locale.value_or(""), cb);
  });
}

void QVKHelpCenterProvider::getSectionsWithCategoryId(
    std::int64_t categoryId, std::string locale, QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  Operations::sections(contextOf(*this), categoryId, locale, std::move(cb));
}

void QVKHelpCenterProvider::getArticlesWithSectionId(
    std::int64_t sectionId, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  getArticlesWithSectionId(sectionId, std::vector<std::string>{}, std::move(cb));
}

void QVKHelpCenterProvider::getArticlesWithSectionId(
    std::int64_t sectionId, std::optional<std::vector<std::string>> labels,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, sectionId, labels = std::move(labels),
                        cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::articlesOfSection(ctx, sectionId, labels, locale.value_or(""), cb);
  });
}

void QVKHelpCenterProvider::getArticlesWithSectionId(
    std::int64_t sectionId, std::optional<std::vector<std::string>> labels, std::string locale,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Operations::articlesOfSection(contextOf(*this), sectionId, labels, locale, std::move(cb));
}

void QVKHelpCenterProvider::searchArticles(std::shared_ptr<QVKHelpCenterSearch> search,
                                           QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest(
      [ctx, search = std::move(search), cb = std::move(cb)](std::optional<std::string> locale) {
        Operations::search(ctx, search, locale.value_or(""), cb);
      });
}

void QVKHelpCenterProvider::searchArticles(std::shared_ptr<QVKHelpCenterSearch> search,
                                           std::string locale,
                                           QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Operations::search(contextOf(*this), search, locale, std::move(cb));
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest(
      [ctx, query = std::move(query), cb = std::move(cb)](std::optional<std::string> locale) {
        Operations::searchByQuery(ctx, query, locale.value_or(""), cb);
      });
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, std::string locale,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Operations::searchByQuery(contextOf(*this), query, locale, std::move(cb));
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, std::optional<std::vector<std::string>> labels,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, query = std::move(query), labels = std::move(labels),
                        cb = std::move(cb)](std::optional<std::string>) {
    Operations::searchByQueryAndLabels(ctx, query, labels, cb);
  });
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, std::optional<std::vector<std::string>> labels,
    std::string /*locale*/, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Operations::searchByQueryAndLabels(contextOf(*this), query, labels, std::move(cb));
}

void QVKHelpCenterProvider::getArticlesByLabels(std::optional<std::vector<std::string>> labels,
                                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest(
      [ctx, labels = std::move(labels), cb = std::move(cb)](std::optional<std::string> locale) {
        Operations::articlesByLabels(ctx, labels, locale.value_or(""), cb);
      });
}

void QVKHelpCenterProvider::getArticlesByLabels(std::optional<std::vector<std::string>> labels,
                                                std::string locale,
                                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Operations::articlesByLabels(contextOf(*this), labels, locale, std::move(cb));
}

void QVKHelpCenterProvider::getArticleWithId(std::int64_t articleId,
                                             QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, articleId, cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::articleById(ctx, articleId, locale.value_or(""), cb);
  });
}

void QVKHelpCenterProvider::getArticleWithId(std::int64_t articleId, std::string locale,
                                             QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Operations::articleById(contextOf(*this), articleId, locale, std::move(cb));
}

void QVKHelpCenterProvider::getArticleSuggestions(
    std::shared_ptr<QVKHelpCenterDeflection> deflection,
    QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, deflection = std::move(deflection),
                        cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::suggestions(ctx, deflection, locale.value_or(""), cb);
  });
}

void QVKHelpCenterProvider::getArticleSuggestions(
    std::shared_ptr<QVKHelpCenterDeflection> deflection, std::string locale,
    QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb) {
  Operations::suggestions(contextOf(*this), deflection, locale, std::move(cb));
}

void QVKHelpCenterProvider::getSectionWithId(std::int64_t sectionId,
                                             QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, sectionId, cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::sectionById(ctx, sectionId, locale.value_or(""), cb);
  });
}

void QVKHelpCenterProvider::getSectionWithId(std::int64_t sectionId, std::string locale,
                                             QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  Operations::sectionById(contextOf(*this), sectionId, locale, std::move(cb));
}

void QVKHelpCenterProvider::getCategoryWithId(std::int64_t categoryId,
                                              QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, categoryId, cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::categoryById(ctx, categoryId, locale.value_or(""), cb);
  });
}

void QVKHelpCenterProvider::getCategoryWithId(std::int64_t categoryId, std::string locale,
                                              QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  Operations::categoryById(contextOf(*this), categoryId, locale, std::move(cb));
}

void QVKHelpCenterProvider::getFlatArticlesWithCallback(
    QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
  getFlatArticles(QVKListArticleQuery(100, 1), std::move(cb));
}

void QVKHelpCenterProvider::getFlatArticles(QVKListArticleQuery query,
                                            QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
  const auto ctx = contextOf(*this);
  ctx.localeForRequest([ctx, query, cb = std::move(cb)](std::optional<std::string> locale) {
    Operations::flatArticles(ctx, locale.value_or(""), query.page(), query.perPage(), cb);
  });
}

void QVKHelpCenterProvider::getFlatArticlesWithLocale(
    std::string locale, std::int64_t page, std::int64_t perPage,
    QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
  Operations::flatArticles(contextOf(*this), locale, page, perPage, std::move(cb));
}

void QVKHelpCenterProvider::getHelpCenterOverviewWithHelpCenterOverviewModel(
    QVKHelpCenterOverviewContentModel model, QVKHelpCenterCategoriesCallback cb) {
  Operations::overview(contextOf(*this), model, std::move(cb));
}

void QVKHelpCenterProvider::getAttachmentWithArticleId(
    std::int64_t articleId, QVKHelpCenterCallback<QVKHelpCenterAttachment> cb) {
  Operations::attachments(contextOf(*this), articleId, std::move(cb));
}

void QVKHelpCenterProvider::submitRecordArticleView(std::optional<QVKHelpCenterArticle> article,
                                                    QVKHelpCenterGenericCallback cb) {
  Operations::recordArticleView(contextOf(*this), article, std::move(cb));
}

void QVKHelpCenterProvider::upVoteArticleWithId(
    std::optional<std::string> articleId, QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb) {
  Operations::vote(contextOf(*this), articleId, kUpVote, std::move(cb));
}

void QVKHelpCenterProvider::downVoteArticleWithId(
    std::optional<std::string> articleId, QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb) {
  Operations::vote(contextOf(*this), articleId, kDownVote, std::move(cb));
}

void QVKHelpCenterProvider::removeVoteWithId(std::optional<std::string> voteId,
                                             QVKHelpCenterGenericCallback cb) {
  Operations::removeVote(contextOf(*this), voteId, std::move(cb));
}

}  // namespace velmaro
