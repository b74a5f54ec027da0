#include "velmaro/helpcenter/help_center_list_operations.h"

#include "quorvel/platform/url_encoding.h"
#include "velmaro/helpcenter/qvk_help_center_parser.h"
#include "velmaro/util/qvk_string_util.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

using quorvel::platform::UrlEncoding;
using Context = HelpCenterListOperations::Context;

void HelpCenterListOperations::categories(const Context& ctx, const std::string& locale,
                                          QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                         "-[QVKHelpCenterProvider getCategoriesWithLocale:callback:]", cb))
    return;
  ctx.send(Context::plainListRequest(
               StringFormat::format("/api/v2/help_center/%@/categories.json?per_page=100", locale),
               QV_HC_CategoriesStarting, QV_HC_CategoriesUpdated, "categories",
               &QVKHelpCenterCategory::parseCategory),
           std::move(cb));
}

void HelpCenterListOperations::sections(const Context& ctx, const std::string& locale,
                                        std::int64_t categoryId,
                                        QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  if (ctx.stopsOnInvalid(
          qvk_NilSafeNSDictionaryOfVariableBindings("categoryId, callback", categoryId, cb),
          "-[QVKHelpCenterProvider getSectionsWithCategoryId:locale:withCallback:]", cb))
    return;
  ctx.send(
      Context::plainListRequest(
          StringFormat::format("/api/v2/help_center/%@/categories/%@/sections.json?per_page=100",
                               locale, categoryId),
          QV_HC_SectionsStarting, QV_HC_SectionsUpdated, "sections",
          &QVKHelpCenterSection::parseSection),
      std::move(cb));
}

void HelpCenterListOperations::articlesOfSection(const Context& ctx, const std::string& locale,
                                                 std::int64_t sectionId, const Labels& labels,
                                                 QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("labels, callback", labels, cb),
                         "-[QVKHelpCenterProvider getArticlesWithSectionId:labels:locale:"
                         "withCallback:]",
                         cb))
    return;
  const auto path = StringFormat::format(
      "/api/v2/help_center/%@/sections/%@/articles.json?per_page=100&include=users&"
      "respect_sanitization_settings=true&label_names=%@",
      locale, sectionId, QVKStringUtil::csvStringFromArray(*labels));
  // The whole path, separators included, goes through the query escaping.
  ctx.send(Context::listRequest<QVKHelpCenterArticle>(
               UrlEncoding::encode(path, UrlEncoding::CharacterSet::urlQueryAllowed),
               QV_HC_ArticlesStarting, QV_HC_ArticlesUpdated,
               [](const boost::json::object& json) {
                 return QVKHelpCenterParser(json).parseArticles(json);
               }),
           std::move(cb));
}

void HelpCenterListOperations::articlesByLabels(const Context& ctx, const std::string& locale,
                                                const Labels& labels,
                                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("labels,callback", labels, cb),
                         "-[QVKHelpCenterProvider getArticlesByLabels:locale:withCallback:]", cb))
    return;
  // Labels go in as they are: one with a blank makes no URL, and the
  // dispatcher refuses the request.
  ctx.send(Context::listRequest<QVKHelpCenterArticle>(
               StringFormat::format(
                   "/api/v2/help_center/%@/articles.json?include=categories,sections,users&"
                   "label_names=%@&sort_by=created_at&sort_order=desc&"
                   "respect_sanitization_settings=true&per_page=100",
                   locale, QVKStringUtil::csvStringFromArray(*labels)),
               QV_HC_ArticlesStarting, QV_HC_ArticlesUpdated,
               [](const boost::json::object& json) {
                 return QVKHelpCenterParser(json).parseArticlesWithRootKey(json, "articles");
               }),
           std::move(cb));
}

void HelpCenterListOperations::flatArticles(const Context& ctx, const std::string& locale,
                                            std::int64_t page, std::int64_t perPage,
                                            QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
  if (ctx.stopsOnInvalid(
          qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
          "-[QVKHelpCenterProvider getFlatArticlesWithLocale:page:perPage:callback:]", cb))
    return;
  ctx.send(Context::listRequest<QVKHelpCenterFlatArticle>(
               StringFormat::format(
                   "/api/v2/help_center/%@/articles.json?include=sections,categories,users&"
                   "sort_by=created_at&sort_order=desc&per_page=%ld&page=%ld",
                   locale, perPage, page),
               QV_HC_ArticlesStarting, QV_HC_ArticlesUpdated,
               [](const boost::json::object& json) {
                 return QVKHelpCenterParser(json).parseFlatArticles(json);
               }),
           std::move(cb));
}

void HelpCenterListOperations::sectionById(const Context& ctx, const std::string& locale,
                                           std::int64_t sectionId,
                                           QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                         "-[QVKHelpCenterProvider getSectionWithId:locale:withCallback:]", cb))
    return;
  ctx.send(Context::listRequest<QVKHelpCenterSection>(
               StringFormat::format("/api/v2/help_center/%@/sections/%@.json", locale, sectionId),
               QV_HC_SectionByIdStarting, QV_HC_SectionByIdSuccess,
               Context::single("section", &QVKHelpCenterSection::parseSection)),
           std::move(cb));
}

void HelpCenterListOperations::categoryById(const Context& ctx, const std::string& locale,
                                            std::int64_t categoryId,
                                            QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                         "-[QVKHelpCenterProvider getCategoryWithId:locale:withCallback:]", cb))
    return;
  ctx.send(
      Context::listRequest<QVKHelpCenterCategory>(
          StringFormat::format("/api/v2/help_center/%@/categories/%@.json", locale, categoryId),
          QV_HC_CategoryByIdStarting, QV_HC_CategoryByIdSuccess,
          Context::single("category", &QVKHelpCenterCategory::parseCategory)),
      std::move(cb));
}

}  // namespace velmaro
