#pragma once

#include <functional>
#include <optional>

#include "velmaro/settings/ticket_forms_settings.h"

namespace velmaro {

// Whether ticket forms are available.
// The callback runs on the thread on which the core library's settings
// provider answers (its main queue); nothing is called before the core
// library is initialized.
class QVKTicketFormsSettingsProvider {
 public:
  using Callback = std::function<void(std::optional<TicketFormsSettings>)>;
  static void getTicketFormsSettings(Callback callback);
  static void getTicketFormsSettingsWithCallback(Callback callback) {
    getTicketFormsSettings(std::move(callback));
  }
};

}  // namespace velmaro
