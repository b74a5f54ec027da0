#pragma once

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/settings/coding_keys.h"

namespace velmaro {

// Whether the account has conversations (request lists, comments) enabled.
class ConversationsSettings {
 public:
  enum class Key { support, enabled, conversations };
  static constexpr CodingKeys<Key, 3> kCodingKeys{{{{Key::support, "support"},
                                                    {Key::enabled, "enabled"},
                                                    {Key::conversations, "conversations"}}}};

  ConversationsSettings() = default;
  // Decodes support.conversations.enabled from the whole settings document.
  static quorvel::platform::Result<ConversationsSettings> decode(
      const boost::json::value& document);
  static ConversationsSettings defaultValue() { return ConversationsSettings(); }

  bool enabled() const { return enabled_; }

 private:
  bool enabled_ = false;
};

using QVKConversationsSettings = ConversationsSettings;

}  // namespace velmaro
