#pragma once

#include <functional>
#include <optional>

#include "velmaro/settings/support_settings.h"

namespace velmaro {

// The request side's settings, with its four sub-records.
// The callback runs on the thread on which the core library's settings
// provider answers (its main queue); nothing is called before the core
// library is initialized.
class QVKSupportSettingsProvider {
 public:
  using Callback = std::function<void(std::optional<SupportSettings>)>;
  static void getSupportSettings(Callback callback);
  static void getSupportSettingsWithCallback(Callback callback) {
    getSupportSettings(std::move(callback));
  }
};

}  // namespace velmaro
