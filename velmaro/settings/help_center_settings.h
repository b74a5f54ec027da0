#pragma once

#include <string>

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/settings/coding_keys.h"

namespace velmaro {

// The Help Center's switches and locale. It lives under the document's
// top-level "help_center" object, not under "support", and is not part of
// SupportSettings.
class HelpCenterSettings {
 public:
  enum class Key { support, enabled, locale, helpCenterArticleVotingEnabled, helpCenter };
  static constexpr CodingKeys<Key, 5> kCodingKeys{
      {{{Key::support, "support"},
        {Key::enabled, "enabled"},
        {Key::locale, "locale"},
        {Key::helpCenterArticleVotingEnabled, "help_center_article_voting_enabled"},
        {Key::helpCenter, "help_center"}}}};

  HelpCenterSettings() = default;
  static quorvel::platform::Result<HelpCenterSettings> decode(const boost::json::value& document);
  static HelpCenterSettings defaultValue() { return HelpCenterSettings(); }

  bool helpCenterArticleVotingEnabled() const { return helpCenterArticleVotingEnabled_; }
  bool enabled() const { return enabled_; }
  const std::string& locale() const { return locale_; }

 private:
  bool helpCenterArticleVotingEnabled_ = false;
  bool enabled_ = false;
  std::string locale_;
};

using QVKHelpCenterSettings = HelpCenterSettings;

}  // namespace velmaro
