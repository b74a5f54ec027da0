#include "tools/qvk/query_builder.h"

namespace qvk {

velmaro::QVKHelpCenterSearch QueryBuilder::search(const HcArguments& arguments) {
  velmaro::QVKHelpCenterSearch search;
  search.query = arguments.query;
  if (arguments.labels) search.labelNames = arguments.labels;
  if (arguments.categoryIds) search.categoryIds = arguments.categoryIds;
  if (arguments.sectionIds) search.sectionIds = arguments.sectionIds;
  if (arguments.page) search.page = arguments.page;
  if (arguments.perPage) search.resultsPerPage = arguments.perPage;
  return search;
}

velmaro::QVKHelpCenterDeflection QueryBuilder::deflection(const HcArguments& arguments) {
  velmaro::QVKHelpCenterDeflection deflection;
  deflection.query = arguments.query;
  if (arguments.labels) deflection.labelNames = arguments.labels;
  if (arguments.categoryId) deflection.categoryId = arguments.categoryId;
  if (arguments.sectionId) deflection.sectionId = arguments.sectionId;
  return deflection;
}

velmaro::QVKHelpCenterOverviewContentModel QueryBuilder::overview(const HcArguments& arguments) {
  using Model = velmaro::QVKHelpCenterOverviewContentModel;
  auto model = Model::defaultContent();
  if (arguments.sectionIds) {
    model.groupType = Model::kGroupTypeSection;
    model.groupIds = arguments.sectionIds;
  } else if (arguments.categoryIds) {
    model.groupType = Model::kGroupTypeCategory;
    model.groupIds = arguments.categoryIds;
  }
  if (arguments.labels) model.labels = arguments.labels;
  return model;
}

std::optional<velmaro::QVKListArticleQuery> QueryBuilder::listArticles(
    const HcArguments& arguments) {
  if (!arguments.page && !arguments.perPage) return std::nullopt;
  return velmaro::QVKListArticleQuery(arguments.perPage.value_or(kDefaultPerPage),
                                      arguments.page.value_or(kDefaultPage));
}

}  // namespace qvk
