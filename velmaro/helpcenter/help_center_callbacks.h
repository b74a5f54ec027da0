#pragma once

#include <vector>

#include "velmaro/core/provider_request.h"
#include "velmaro/core/qvk_dispatcher_response.h"
#include "velmaro/helpcenter/help_center_category_view_model_container.h"

namespace velmaro {

// The Help Center's three callback kinds: each takes a result (absent on
// error) and an optional error. An empty std::function is an absent callback.
template <class Record>
using QVKHelpCenterCallback = ProviderCallback<std::vector<Record>>;
using QVKHelpCenterCategoriesCallback =
    ProviderCallback<HelpCenterCategoryViewModelContainer::Categories>;
using QVKHelpCenterGenericCallback = ProviderCallback<QVKDispatcherResponse>;

}  // namespace velmaro
