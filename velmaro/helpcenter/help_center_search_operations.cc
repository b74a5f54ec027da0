#include "velmaro/helpcenter/help_center_search_operations.h"

#include "quorvel/platform/url_encoding.h"
#include "velmaro/blips/help_center_blips.h"
#include "velmaro/helpcenter/qvk_help_center_parser.h"
#include "velmaro/util/qvk_string_util.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

namespace {

using quorvel::platform::UrlEncoding;
using Context = HelpCenterSearchOperations::Context;

// Search answers keep their articles under "results".
std::vector<QVKHelpCenterArticle> searchResults(const boost::json::object& json) {
  return QVKHelpCenterParser(json).parseArticleSearchResults(json);
}

// The same, once the answer's "count" has become the session's last search.
auto rememberedSearch(std::optional<std::string> query) {
  return [query = std::move(query)](const boost::json::object& json) {
    Context::cacheLastSearch(query, json);
    return searchResults(json);
  };
}

}  // namespace

void HelpCenterSearchOperations::search(const Context& ctx, const std::string& locale,
                                        const std::shared_ptr<QVKHelpCenterSearch>& search,
                                        QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("search,callback", search, cb),
                         "-[QVKHelpCenterProvider searchArticles:locale:withCallback:]", cb))
    return;
  // Appended on every call, to the caller's object: a reused search sends
  // the names more than once.
  if (!search->sideLoads) search->sideLoads.emplace();
  for (const char* name : {"users", "categories", "sections"}) search->sideLoads->push_back(name);
  ctx.postToNotificationCenterOnMainThread(QV_HC_SearchStarting);
  HelpCenterBlips::blipSearchQuery(search->query.value_or(""));
  ctx.send(Context::listRequest<QVKHelpCenterArticle>(
               StringFormat::format("/api/v2/help_center/articles/search.json%@&origin=mobile_sdk&"
                                    "respect_sanitization_settings=true",
                                    search->queryStringWithLocale(locale)),
               nullptr, QV_HC_SearchSuccess, rememberedSearch(search->query)),
           std::move(cb));
}

void HelpCenterSearchOperations::searchByQuery(const Context& ctx, const std::string& locale,
                                               const std::optional<std::string>& query,
                                               QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  if (ctx.stopsOnInvalid(
          qvk_NilSafeNSDictionaryOfVariableBindings("query,callback", query, cb),
          "-[QVKHelpCenterProvider searchForArticlesUsingQuery:locale:withCallback:]", cb))
    return;
  ctx.send(Context::listRequest<QVKHelpCenterArticle>(
               StringFormat::format(
                   "/api/v2/help_center/articles/search.json?query=%@&"
                   "include=sections,categories,users&per_page=100&locale=%@&origin=mobile_sdk&"
                   "respect_sanitization_settings=true",
                   UrlEncoding::legacyEscape(*query), locale),
               QV_HC_SearchStarting, QV_HC_SearchSuccess, &searchResults),
           std::move(cb));
}

void HelpCenterSearchOperations::searchByQueryAndLabels(
    const Context& ctx, const std::string& /*locale*/, const std::optional<std::string>& query,
    const Labels& labels, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  if (ctx.stopsOnInvalid(
          qvk_NilSafeNSDictionaryOfVariableBindings("query,labels,callback", query, labels, cb),
          "-[QVKHelpCenterProvider searchForArticlesUsingQuery:andLabels:locale:withCallback:]",
          cb))
    return;
  ctx.postToNotificationCenterOnMainThread(QV_HC_SearchStarting);
  ctx.localeForRequest([ctx, query, labels, cb](std::optional<std::string> resolved) {
    ctx.send(Context::listRequest<QVKHelpCenterArticle>(
                 StringFormat::format(
                     "/api/v2/help_center/articles/search.json?query=%@&"
                     "include=sections,categories,users&per_page=100&label_names=%@&locale=%@&"
                     "origin=mobile_sdk&respect_sanitization_settings=true",
                     UrlEncoding::legacyEscape(*query), QVKStringUtil::csvStringFromArray(*labels),
                     resolved.value_or("")),
                 nullptr, QV_HC_SearchSuccess, rememberedSearch(query)),
             cb);
  });
}

void HelpCenterSearchOperations::suggestions(
    const Context& ctx, const std::string& locale,
    const std::shared_ptr<QVKHelpCenterDeflection>& deflection,
    QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb) {
  if (ctx.stopsOnInvalid(
          qvk_NilSafeNSDictionaryOfVariableBindings("search,callback", deflection, cb),
          "-[QVKHelpCenterProvider getArticleSuggestions:locale:withCallback:]", cb))
    return;
  auto request = Context::listRequest<QVKHelpCenterSimpleArticle>(
      StringFormat::format(
          "/api/mobile/help_center/search/deflect.json%@&respect_sanitization_settings=true",
          deflection->queryStringWithLocale(locale)),
      QV_HC_DeflectionSearchStarting, QV_HC_DeflectionSearchSuccess,
      &QVKHelpCenterSimpleArticle::parseDeflectionSearchResults);
  request.failures = {QV_HC_DeflectionSearchError};
  ctx.send(std::move(request), std::move(cb));
}

}  // namespace velmaro
