#pragma once

#include <functional>
#include <optional>

#include "velmaro/settings/attachment_settings.h"

namespace velmaro {

// Whether attachments are enabled, and their size limit.
// The callback runs on the thread on which the core library's settings
// provider answers (its main queue); nothing is called before the core
// library is initialized.
class QVKAttachmentSettingsProvider {
 public:
  using Callback = std::function<void(std::optional<AttachmentSettings>)>;
  static void getAttachmentSettings(Callback callback);
  static void getAttachmentSettingsWithCallback(Callback callback) {
    getAttachmentSettings(std::move(callback));
  }
};

}  // namespace velmaro
