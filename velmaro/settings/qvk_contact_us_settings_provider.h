#pragma once

#include <functional>
#include <optional>

#include "velmaro/settings/contact_us_settings.h"

namespace velmaro {

// The tags added to every new request.
// The callback runs on the thread on which the core library's settings
// provider answers (its main queue); nothing is called before the core
// library is initialized.
class QVKContactUsSettingsProvider {
 public:
  using Callback = std::function<void(std::optional<ContactUsSettings>)>;
  static void getContactUsSettings(Callback callback);
  static void getContactUsSettingsWithCallback(Callback callback) {
    getContactUsSettings(std::move(callback));
  }
};

}  // namespace velmaro
