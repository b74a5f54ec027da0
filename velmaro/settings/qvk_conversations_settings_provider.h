#pragma once

#include <functional>
#include <optional>

#include "velmaro/settings/conversations_settings.h"

namespace velmaro {

// Any source of the conversations flag: a class with a class-level
// getConversationsSettings(callback). Callers that take the source as a type
// parameter can substitute another one in tests.
template <class T>
concept ConversationsSettingsProviderProtocol =
    requires(std::function<void(std::optional<ConversationsSettings>)> callback) {
  T::getConversationsSettings(callback);
};

// Whether conversations are enabled.
// The callback runs on the thread on which the core library's settings
// provider answers (its main queue); nothing is called before the core
// library is initialized.
class QVKConversationsSettingsProvider {
 public:
  using Callback = std::function<void(std::optional<ConversationsSettings>)>;
  static void getConversationsSettings(Callback callback);
  static void getConversationsSettingsWithCallback(Callback callback) {
    getConversationsSettings(std::move(callback));
  }
};

static_assert(ConversationsSettingsProviderProtocol<QVKConversationsSettingsProvider>);

}  // namespace velmaro
