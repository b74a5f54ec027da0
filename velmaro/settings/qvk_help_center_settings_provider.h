#pragma once

#include <functional>
#include <optional>

#include "velmaro/settings/help_center_settings.h"

namespace velmaro {

// The Help Center's switches and locale.
// The callback runs on the thread on which the core library's settings
// provider answers (its main queue); nothing is called before the core
// library is initialized.
class QVKHelpCenterSettingsProvider {
 public:
  using Callback = std::function<void(std::optional<HelpCenterSettings>)>;
  static void getHelpCenterSettings(Callback callback);
  static void getHelpCenterSettingsWithCallback(Callback callback) {
    getHelpCenterSettings(std::move(callback));
  }
};

}  // namespace velmaro
