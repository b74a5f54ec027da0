#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/json/array.hpp>

#include "tests/provider_fixture.h"
#include "velmaro/helpcenter/qvk_help_center_provider.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"

namespace velmaro::testing {

// The Help Center provider on the shared fixture; "QV_HC_" notifications.
class HelpCenterProviderTest : public ProviderFixture {
 protected:
  static constexpr std::int64_t kFirstCategory = 360000010001;
  static constexpr std::int64_t kFirstSection = 360000020001;
  static constexpr std::int64_t kFirstArticle = 360000030001;

  HelpCenterProviderTest() : ProviderFixture("QV_HC_") {}

  void resetState() override { QVKHelpCenterSessionCache::resetForTesting(); }
  void startProviders() override { provider_ = std::make_unique<QVKHelpCenterProvider>(core_); }
  void stopProviders() override { provider_.reset(); }

  using ProviderFixture::notificationNames;
  std::vector<std::string> notificationNames() const { return notificationNames(provider_.get()); }

  // Runs a list operation with a collecting callback; waits for `count` answers.
  template <class Record, class Start>
  std::shared_ptr<Answers<std::vector<Record>>> list(Start start, std::size_t count = 1) {
    return call<std::vector<Record>>(std::move(start), count);
  }

  boost::json::array articleViews() const {
    return controlJson("article_views").as_object().at("article_views").as_array();
  }

  std::unique_ptr<QVKHelpCenterProvider> provider_;
};

}  // namespace velmaro::testing
