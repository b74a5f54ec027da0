#include "velmaro/helpcenter/qvk_help_center_provider_context.h"

#include "quorvel/platform/device_info.h"
#include "velmaro/core/support.h"
#include "velmaro/helpcenter/qvk_help_center_last_search.h"
#include "velmaro/helpcenter/qvk_help_center_provider.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"
#include "velmaro/settings/qvk_help_center_settings_provider.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {

void QVKHelpCenterProviderContext::localeForRequest(LocaleContinuation continuation) const {
  if (auto support = Support::instance()) {
    if (auto localeOverride = support->helpCenterLocaleOverride()) {
      continuation(std::move(localeOverride));
      return;
    }
  }
  QVKHelpCenterSettingsProvider::getHelpCenterSettingsWithCallback(
      [continuation = std::move(continuation)](std::optional<HelpCenterSettings> settings) {
        if (settings) {
          continuation(settings->locale());
          return;
        }
        const auto languages = quorvel::platform::DeviceInfo::preferredLanguages();
        continuation(languages.empty() ? std::nullopt
                                       : std::optional<std::string>(languages.front()));
      });
}

quorvel::platform::Error QVKHelpCenterProviderContext::votingDisabledError() {
  return Error::withDescription(QVKHelpCenterProvider::kVotingErrorDomain,
                                QVKHelpCenterProvider::kVotingDisabledCode,
                                QVKHelpCenterProvider::kVotingDisabledMessage);
}

void QVKHelpCenterProviderContext::articleVotingAvailable(VotingContinuation continuation) {
  QVKHelpCenterSettingsProvider::getHelpCenterSettingsWithCallback(
      [continuation = std::move(continuation)](std::optional<HelpCenterSettings> settings) {
        if (!settings || !settings->helpCenterArticleVotingEnabled()) {
          QVKClassicLogger::error(QVKHelpCenterProvider::kVotingDisabledMessage);
          continuation(votingDisabledError());
        }
        // No early return: callers rely on the second call, which sends the vote.
        continuation(std::nullopt);
      });
}

void QVKHelpCenterProviderContext::cacheLastSearch(const std::optional<std::string>& query,
                                                   const boost::json::object& result) {
  const auto count = JsonValueConversion::number(result.if_contains("count")).value_or(0);
  QVKHelpCenterSessionCache::cacheLastSearch(QVKHelpCenterLastSearch::initWithQuery(query, count));
}

}  // namespace velmaro
