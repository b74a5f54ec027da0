#include "emulator/help_center_routes.h"

#include <algorithm>
#include <functional>

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/help_center_catalog.h"
#include "emulator/http_support.h"
#include "emulator/identity_store.h"
#include "emulator/pager.h"

namespace qvk::emulator {

namespace json = boost::json;
using httplib::Request;
using httplib::Response;

namespace {

using LocaleHandler =
    std::function<void(const Request&, Response&, HelpCenterCatalog&, const std::string& locale)>;

// Runs `handler` for a known locale (taken from the first path capture, or
// from `locale`), and answers 404 for a locale without content: a client that
// sends an empty or garbled locale should notice.
void withLocale(EmulatorContext& ctx, const Request& req, Response& res,
                const std::string& rawLocale, const LocaleHandler& handler) {
  HelpCenterCatalog catalog(ctx.db, http::baseUrl(req));
  std::string locale = http::lower(rawLocale);
  if (!catalog.hasLocale(locale)) return http::sendNotFound(res);
  handler(req, res, catalog, locale);
}

httplib::Server::Handler localeRoute(EmulatorContext& ctx, LocaleHandler handler) {
  return [&ctx, handler = std::move(handler)](const Request& req, Response& res) {
    withLocale(ctx, req, res, req.matches[1].str(), handler);
  };
}

std::int64_t idAt(const Request& req, std::size_t i) {
  return http::parseId(req.matches[i].str()).value_or(-1);
}

json::array articlesJson(HelpCenterCatalog& catalog, const std::vector<ArticleRow>& articles,
                         std::size_t begin, std::size_t end, const std::string& locale) {
  json::array out;
  for (std::size_t i = begin; i < end; ++i) out.push_back(catalog.articleJson(articles[i], locale));
  return out;
}

// Adds "users", "sections" and "categories" for the given articles as the
// include list asks; a name listed twice is loaded once.
void sideLoad(EmulatorContext& ctx, HelpCenterCatalog& catalog, json::object& answer,
              const std::string& include, const std::vector<const ArticleRow*>& articles,
              const std::string& locale) {
  auto names = http::splitList(include);
  auto wants = [&](const char* n) {
    return std::find(names.begin(), names.end(), n) != names.end();
  };
  std::vector<std::int64_t> users, sections, categories;
  for (const auto* a : articles) {
    users.push_back(a->authorId);
    sections.push_back(a->sectionId);
    categories.push_back(a->categoryId);
  }
  if (wants("users")) answer["users"] = ctx.identities.usersJson(users, catalog.base());
  if (wants("sections")) answer["sections"] = catalog.sectionsWithIds(locale, sections);
  if (wants("categories")) answer["categories"] = catalog.categoriesWithIds(locale, categories);
}

std::vector<const ArticleRow*> pointers(const std::vector<ArticleRow>& v, std::size_t begin,
                                        std::size_t end) {
  std::vector<const ArticleRow*> out;
  for (std::size_t i = begin; i < end; ++i) out.push_back(&v[i]);
  return out;
}

// Words of the query that all appear, case-insensitively, in the title or
// the text of the body.
bool matchesQuery(const ArticleRow& a, const std::vector<std::string>& words) {
  std::string text = http::lower(http::decodeEntities(a.title + " " + http::stripTags(a.body)));
  return std::all_of(words.begin(), words.end(),
                     [&](const std::string& w) { return text.find(w) != std::string::npos; });
}

std::vector<ArticleRow> searchArticles(HelpCenterCatalog& catalog, const Request& req,
                                       const std::string& locale, const char* categoryKey,
                                       const char* sectionKey) {
  auto words = http::splitList(http::lower(http::param(req, "query")), ' ');
  auto labels = http::splitList(http::param(req, "label_names"));
  auto categories = http::parseIds(http::param(req, categoryKey));
  auto sections = http::parseIds(http::param(req, sectionKey));
  auto all = withAnyLabel(catalog.articles(locale), labels);
  std::vector<ArticleRow> hits;
  for (auto& a : all) {
    if (!categories.empty() &&
        std::find(categories.begin(), categories.end(), a.categoryId) == categories.end())
      continue;
    if (!sections.empty() &&
        std::find(sections.begin(), sections.end(), a.sectionId) == sections.end())
      continue;
    if (matchesQuery(a, words)) hits.push_back(std::move(a));
  }
  // Title hits rank first, the rest keep the tree order.
  std::stable_partition(hits.begin(), hits.end(), [&](const ArticleRow& a) {
    std::string title = http::lower(http::decodeEntities(a.title));
    return !words.empty() && std::all_of(words.begin(), words.end(), [&](const std::string& w) {
      return title.find(w) != std::string::npos;
    });
  });
  return hits;
}

std::string searchLocale(const Request& req) {
  auto locale = http::param(req, "locale");
  return locale.empty() ? std::string("en-us") : locale;
}

// Sorts by created_at, updated_at or title; anything else keeps the tree
// (position) order. "desc" reverses whichever order results.
void sortArticles(std::vector<ArticleRow>& articles, const std::string& sortBy,
                  const std::string& sortOrder) {
  auto key = [&](const ArticleRow& a) -> std::string {
    if (sortBy == "created_at") return a.createdAt;
    if (sortBy == "updated_at") return a.updatedAt;
    return http::lower(a.title);
  };
  if (sortBy == "created_at" || sortBy == "updated_at" || sortBy == "title") {
    std::stable_sort(articles.begin(), articles.end(),
                     [&](const ArticleRow& a, const ArticleRow& b) { return key(a) < key(b); });
  }
  if (sortOrder == "desc") std::reverse(articles.begin(), articles.end());
}

void listCategories(const Request& req, Response& res, HelpCenterCatalog& catalog,
                    const std::string& locale) {
  auto all = catalog.categories(locale);
  Pager pager(req, all.size(), 30, 100);
  json::array page(all.begin() + static_cast<std::ptrdiff_t>(pager.begin()),
                   all.begin() + static_cast<std::ptrdiff_t>(pager.end()));
  json::object answer{{"categories", std::move(page)}};
  pager.describe(answer);
  answer["sort_by"] = "position";
  answer["sort_order"] = "asc";
  http::sendJson(res, 200, answer);
}

void listSections(const Request& req, Response& res, HelpCenterCatalog& catalog,
                  const std::string& locale) {
  auto categoryId = idAt(req, 2);
  if (!catalog.category(locale, categoryId)) return http::sendNotFound(res);
  auto all = catalog.sections(locale, categoryId);
  Pager pager(req, all.size(), 30, 100);
  json::array page(all.begin() + static_cast<std::ptrdiff_t>(pager.begin()),
                   all.begin() + static_cast<std::ptrdiff_t>(pager.end()));
  json::object answer{{"sections", std::move(page)}};
  pager.describe(answer);
  answer["sort_by"] = "position";
  answer["sort_order"] = "asc";
  http::sendJson(res, 200, answer);
}

void showOne(Response& res, const char* key, std::optional<json::object> record) {
  if (!record) return http::sendNotFound(res);
  http::sendJson(res, 200, json::object{{key, std::move(*record)}});
}

void sectionArticles(EmulatorContext& ctx, const Request& req, Response& res,
                     HelpCenterCatalog& catalog, const std::string& locale) {
  auto sectionId = idAt(req, 2);
  if (!catalog.section(locale, sectionId)) return http::sendNotFound(res);
  auto all =
      withAnyLabel(catalog.articles(locale), http::splitList(http::param(req, "label_names")));
  std::erase_if(all, [&](const ArticleRow& a) { return a.sectionId != sectionId; });
  Pager pager(req, all.size(), 30, 100);
  json::object answer{{"articles", articlesJson(catalog, all, pager.begin(), pager.end(), locale)}};
  sideLoad(ctx, catalog, answer, http::param(req, "include"),
           pointers(all, pager.begin(), pager.end()), locale);
  pager.describe(answer);
  http::sendJson(res, 200, answer);
}

void listArticles(EmulatorContext& ctx, const Request& req, Response& res,
                  HelpCenterCatalog& catalog, const std::string& locale) {
  auto all =
      withAnyLabel(catalog.articles(locale), http::splitList(http::param(req, "label_names")));
  std::string sortBy = http::param(req, "sort_by");
  std::string sortOrder = http::param(req, "sort_order");
  sortArticles(all, sortBy, sortOrder);
  Pager pager(req, all.size(), 30, 100);
  json::object answer{{"articles", articlesJson(catalog, all, pager.begin(), pager.end(), locale)}};
  sideLoad(ctx, catalog, answer, http::param(req, "include"),
           pointers(all, pager.begin(), pager.end()), locale);
  pager.describe(answer);
  answer["sort_by"] = sortBy.empty() ? "position" : sortBy;
  answer["sort_order"] = sortOrder.empty() ? "asc" : sortOrder;
  http::sendJson(res, 200, answer);
}

void search(EmulatorContext& ctx, const Request& req, Response& res, HelpCenterCatalog& catalog,
            const std::string& locale) {
  auto hits = searchArticles(catalog, req, locale, "category", "section");
  Pager pager(req, hits.size(), 25, 100);
  json::array results;
  for (std::size_t i = pager.begin(); i < pager.end(); ++i) {
    auto article = catalog.articleJson(hits[i], locale);
    std::string text = http::decodeEntities(http::stripTags(hits[i].body));
    article["snippet"] = text.substr(0, 160);
    article["result_type"] = "article";
    results.push_back(std::move(article));
  }
  json::object answer{{"results", std::move(results)}};
  sideLoad(ctx, catalog, answer, http::param(req, "include"),
           pointers(hits, pager.begin(), pager.end()), locale);
  pager.describe(answer);
  http::sendJson(res, 200, answer);
}

void deflect(const Request& req, Response& res, HelpCenterCatalog& catalog,
             const std::string& locale) {
  auto hits = searchArticles(catalog, req, locale, "category", "section");
  Pager pager(req, hits.size(), 5, 100);
  json::array results;
  for (std::size_t i = pager.begin(); i < pager.end(); ++i) {
    auto full = catalog.articleJson(hits[i], locale);
    results.push_back(json::object{{"id", hits[i].id},
                                   {"title", hits[i].title},
                                   {"html_url", full["html_url"]},
                                   {"section_id", hits[i].sectionId},
                                   {"locale", locale}});
  }
  json::object answer{{"results", std::move(results)}};
  pager.describe(answer);
  http::sendJson(res, 200, answer);
}

void articleById(EmulatorContext& ctx, const Request& req, Response& res,
                 HelpCenterCatalog& catalog, const std::string& locale) {
  auto article = catalog.article(locale, idAt(req, 2));
  if (!article) return http::sendNotFound(res);
  json::object answer{{"article", catalog.articleJson(*article, locale)}};
  sideLoad(ctx, catalog, answer, http::param(req, "include"), {&*article}, locale);
  http::sendJson(res, 200, answer);
}

// The overview document: categories -> sections -> the first per_page
// articles of each section, with the full counts beside them.
void articleTree(const Request& req, Response& res, HelpCenterCatalog& catalog,
                 const std::string& locale) {
  auto sectionIds = http::parseIds(http::param(req, "section_ids"));
  auto categoryIds = http::parseIds(http::param(req, "category_ids"));
  auto labels = http::splitList(http::param(req, "article_labels"));
  auto perPage =
      std::clamp<std::int64_t>(http::parseId(http::param(req, "per_page")).value_or(1000), 1, 1000);
  auto articles = withAnyLabel(catalog.articles(locale), labels);
  auto contains = [](const std::vector<std::int64_t>& v, std::int64_t id) {
    return std::find(v.begin(), v.end(), id) != v.end();
  };
  json::array categories;
  for (const auto& c : catalog.categories(locale)) {
    auto categoryId = c.at("id").as_int64();
    if (!categoryIds.empty() && !contains(categoryIds, categoryId)) continue;
    json::array sections;
    for (const auto& s : catalog.sections(locale, categoryId)) {
      auto sectionId = s.at("id").as_int64();
      if (!sectionIds.empty() && !contains(sectionIds, sectionId)) continue;
      json::array items;
      std::int64_t count = 0;
      for (const auto& a : articles) {
        if (a.sectionId != sectionId) continue;
        if (count++ < perPage)
          items.push_back(
              json::object{{"id", a.id}, {"section_id", a.sectionId}, {"name", a.title}});
      }
      if (count == 0 && !labels.empty()) continue;
      sections.push_back(json::object{{"id", sectionId},
                                      {"category_id", categoryId},
                                      {"name", s.at("name")},
                                      {"article_count", count},
                                      {"articles", std::move(items)}});
    }
    if (sections.empty() && (!labels.empty() || !sectionIds.empty())) continue;
    auto sectionCount = static_cast<std::int64_t>(sections.size());
    categories.push_back(json::object{{"id", categoryId},
                                      {"name", c.at("name")},
                                      {"section_count", sectionCount},
                                      {"sections", std::move(sections)}});
  }
  auto categoryCount = static_cast<std::int64_t>(categories.size());
  http::sendJson(
      res, 200,
      json::object{{"category_count", categoryCount}, {"categories", std::move(categories)}});
}

void articleAttachments(const Request& req, Response& res, HelpCenterCatalog& catalog,
                        const std::string& locale) {
  auto articleId = idAt(req, 2);
  if (!catalog.article(locale, articleId)) return http::sendNotFound(res);
  auto all = catalog.attachments(locale, articleId);
  std::string kind = req.matches[3].str();
  json::array picked;
  for (auto& a : all) {
    bool isInline = a.as_object().at("inline").as_bool();
    if (kind == "/block" && isInline) continue;
    if (kind == "/inline" && !isInline) continue;
    picked.push_back(std::move(a));
  }
  http::sendJson(res, 200, json::object{{"article_attachments", std::move(picked)}});
}

void vote(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) return http::sendUnauthorized(res);
  HelpCenterCatalog catalog(ctx.db, http::baseUrl(req));
  auto articleId = idAt(req, 1);
  if (!catalog.articleExists(articleId)) return http::sendNotFound(res);
  bool created = false;
  auto record = catalog.vote(articleId, user->id, req.matches[2].str() == "up" ? 1 : -1, created);
  http::sendJson(res, created ? 201 : 200, json::object{{"vote", std::move(record)}});
}

void removeVote(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) return http::sendUnauthorized(res);
  HelpCenterCatalog catalog(ctx.db, http::baseUrl(req));
  if (!catalog.removeVote(idAt(req, 1), user->id)) return http::sendNotFound(res);
  res.status = 204;
}

void recordView(EmulatorContext& ctx, const Request& req, Response& res, HelpCenterCatalog& catalog,
                const std::string& locale) {
  auto articleId = idAt(req, 2);
  if (!catalog.article(locale, articleId)) return http::sendNotFound(res);
  if (!req.body.empty() && !http::jsonBody(req))
    return http::sendError(res, 400, "InvalidJson", "The body is not a JSON object");
  auto user = ctx.identities.authenticate(req);
  catalog.recordView(articleId, locale, user ? std::optional(user->id) : std::nullopt, req.body);
  http::sendJson(res, 200, json::object{});
}

void attachmentContent(EmulatorContext& ctx, const Request& req, Response& res) {
  HelpCenterCatalog catalog(ctx.db, http::baseUrl(req));
  auto content = catalog.attachmentContent(idAt(req, 1));
  if (!content) return http::sendNotFound(res);
  res.set_content(content->bytes, content->contentType.c_str());
}

}  // namespace

void HelpCenterRoutes::install(httplib::Server& server, EmulatorContext& ctx) {
  using namespace std::placeholders;
  const std::string hc = "/api/v2/help_center/([^/]+)";
  server.Get(hc + R"(/categories\.json)", localeRoute(ctx, listCategories));
  server.Get(hc + R"(/categories/(\d+)\.json)",
             localeRoute(ctx, [](const Request& req, Response& res, HelpCenterCatalog& c,
                                 const std::string& l) {
               showOne(res, "category", c.category(l, idAt(req, 2)));
             }));
  server.Get(hc + R"(/categories/(\d+)/sections\.json)", localeRoute(ctx, listSections));
  server.Get(hc + R"(/sections/(\d+)\.json)",
             localeRoute(ctx, [](const Request& req, Response& res, HelpCenterCatalog& c,
                                 const std::string& l) {
               showOne(res, "section", c.section(l, idAt(req, 2)));
             }));
  server.Get(hc + R"(/sections/(\d+)/articles\.json)",
             localeRoute(ctx, std::bind(sectionArticles, std::ref(ctx), _1, _2, _3, _4)));
  server.Get(hc + R"(/articles\.json)",
             localeRoute(ctx, std::bind(listArticles, std::ref(ctx), _1, _2, _3, _4)));
  // The client joins this path's parameter with "&" and no "?", so the
  // parameter arrives as part of the path.
  server.Get(hc + R"(/articles/(\d+)/attachments(/block|/inline)?\.json(&.*)?)",
             localeRoute(ctx, articleAttachments));
  server.Post(hc + R"(/articles/(\d+)/stats/view\.json)",
              localeRoute(ctx, std::bind(recordView, std::ref(ctx), _1, _2, _3, _4)));
  server.Get(R"(/api/v2/help_center/articles/search\.json)", [&ctx](const Request& req,
                                                                    Response& res) {
    withLocale(ctx, req, res, searchLocale(req), std::bind(search, std::ref(ctx), _1, _2, _3, _4));
  });
  server.Get(R"(/api/mobile/help_center/search/deflect\.json)",
             [&ctx](const Request& req, Response& res) {
               withLocale(ctx, req, res, searchLocale(req), deflect);
             });
  server.Get(R"(/hc/api/mobile/([^/]+)/articles/(\d+)\.json)",
             localeRoute(ctx, std::bind(articleById, std::ref(ctx), _1, _2, _3, _4)));
  server.Get(R"(/hc/api/mobile/([^/]+)/article_tree\.json)", localeRoute(ctx, articleTree));
  server.Get(R"(/hc/article_attachments/(\d+)/.+)",
             [&ctx](const Request& req, Response& res) { attachmentContent(ctx, req, res); });
  server.Post(R"(/api/v2/help_center/articles/(\d+)/(up|down)\.json)",
              [&ctx](const Request& req, Response& res) { vote(ctx, req, res); });
  server.Delete(R"(/api/v2/help_center/votes/(\d+)\.json)",
                [&ctx](const Request& req, Response& res) { removeVote(ctx, req, res); });
}

}  // namespace qvk::emulator
