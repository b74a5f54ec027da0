#include "velmaro/helpcenter/help_center_article_operations.h"

#include <boost/json/serialize.hpp>

#include "velmaro/blips/help_center_blips.h"
#include "velmaro/helpcenter/qvk_help_center_parser.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

namespace {

using quorvel::platform::Result;
using Context = HelpCenterArticleOperations::Context;
using Categories = HelpCenterCategoryViewModelContainer::Categories;

// {"article": a, "users": u} read as the list answer {"articles": [a],
// "users": u}, so that the list parser fills the author (and, with no
// side-loaded sections, sets no breadcrumb).
std::vector<QVKHelpCenterArticle> parseSingleArticle(const boost::json::object& answer) {
  boost::json::array articles;
  if (const auto* article = answer.if_contains("article")) articles.push_back(*article);
  boost::json::object list{{"articles", std::move(articles)}};
  const auto* users = answer.if_contains("users");
  list["users"] = users != nullptr ? *users : boost::json::array();
  return QVKHelpCenterParser::initWithDictionary(list).parseArticles(list);
}

}  // namespace

void HelpCenterArticleOperations::articleById(const Context& ctx, const std::string& locale,
                                              std::int64_t articleId,
                                              QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                         "-[QVKHelpCenterProvider getArticleWithId:locale:withCallback:]", cb))
    return;
  auto request = Context::listRequest<QVKHelpCenterArticle>(
      StringFormat::format(
          "/hc/api/mobile/%@/articles/%@.json?include=users&respect_sanitization_settings=true",
          locale, articleId),
      QV_HC_ArticleByIdStarting, QV_HC_ArticleByIdSuccess, &parseSingleArticle);
  request.answered = [ctx](const std::vector<QVKHelpCenterArticle>& articles) {
    if (!articles.empty()) recordArticleView(ctx, articles.front(), [](auto, auto) {});
  };
  ctx.send(std::move(request), std::move(cb));
}

void HelpCenterArticleOperations::recordArticleView(
    const Context& ctx, const std::optional<QVKHelpCenterArticle>& article,
    QVKHelpCenterGenericCallback cb) {
  if (ctx.stopsOnInvalid(
          qvk_NilSafeNSDictionaryOfVariableBindings("article, callback", article, cb),
          "-[QVKHelpCenterProvider submitRecordArticleView:withCallback:]", cb))
    return;
  ctx.localeForRequest([ctx, article = *article, cb](std::optional<std::string> locale) {
    ProviderRequest<QVKDispatcherResponse> request;
    request.path = StringFormat::format("/api/v2/help_center/%@/articles/%@/stats/view.json",
                                        locale.value_or(""), article.identifier);
    request.httpMethod = "POST";
    if (auto body = QVKHelpCenterSessionCache::recordArticleViewRequestJson()) {
      request.body = boost::json::serialize(*body);
    }
    request.parse = [](QVKDispatcherResponse response) -> Result<QVKDispatcherResponse> {
      // The search session's first click is spent once the view is counted.
      QVKHelpCenterSessionCache::unsetUniqueSearchResultClick();
      return response;
    };
    request.answered = [article, locale](const QVKDispatcherResponse&) {
      HelpCenterBlips::blipArticleViewed(article.title.value_or(""), article.htmlUrl.value_or(""),
                                         locale.value_or(""), article.identifier.value_or(0),
                                         article.locale.value_or(""));
    };
    request.callbackName = Context::kGenericCallback;
    ctx.send(std::move(request), cb);
  });
}

void HelpCenterArticleOperations::attachments(const Context& ctx, std::int64_t articleId,
                                              QVKHelpCenterCallback<QVKHelpCenterAttachment> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                         "-[QVKHelpCenterProvider getAttachmentWithArticleId:withCallback:]", cb))
    return;
  ctx.postToNotificationCenterOnMainThread(QV_HC_AttachmentsStarting);
  ctx.localeForRequest([ctx, articleId, cb](std::optional<std::string> locale) {
    // "&per_page" without a "?" is what the service expects on this path.
    auto request = Context::listRequest<QVKHelpCenterAttachment>(
        StringFormat::format(
            "/api/v2/help_center/%@/articles/%@/attachments/block.json&per_page=100",
            locale.value_or(""), articleId),
        nullptr, QV_HC_AttachmentsUpdated, &QVKHelpCenterAttachment::parseAttachments);
    request.failures = {QV_HC_AttachmentsErrored, QV_HC_RequestError};
    ctx.send(std::move(request), cb);
  });
}

void HelpCenterArticleOperations::overview(const Context& ctx,
                                           const QVKHelpCenterOverviewContentModel& model,
                                           QVKHelpCenterCategoriesCallback cb) {
  if (ctx.stopsOnInvalid(
          qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
          "-[QVKHelpCenterProvider getHelpCenterOverviewWithHelpCenterOverviewModel:callback:]",
          cb))
    return;
  // The overview announces nothing; a tree that does not parse is answered
  // as the error.
  ctx.localeForRequest([ctx, query = model.formQueryString(),
                        cb](std::optional<std::string> locale) {
    ProviderRequest<Categories> request;
    request.path =
        StringFormat::format("/hc/api/mobile/%@/article_tree.json%@", locale.value_or(""), query);
    request.parse = [](QVKDispatcherResponse response) -> Result<Categories> {
      return HelpCenterCategoryViewModelContainer::parseWithData(response.data.value_or(""));
    };
    request.callbackName = Context::kCategoriesCallback;
    ctx.send(std::move(request), cb);
  });
}

}  // namespace velmaro
