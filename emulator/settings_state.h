#pragma once

#include <mutex>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "emulator/emulator_options.h"

namespace qvk::emulator {

// The run-time switches of the settings document. The command line sets them
// at start; the scenario controls change them while tests run.
class SettingsState {
 public:
  explicit SettingsState(const EmulatorOptions& options);

  // The document served at /api/mobile/sdk/settings/<app id>.json.
  boost::json::object document() const;
  // The switches as the scenario controls show and take them.
  boost::json::object toggles() const;
  // Applies the keys present in `patch`; answers an error text for a key with
  // the wrong type (nothing is changed then), or "" on success.
  std::string apply(const boost::json::object& patch);

  bool helpCenterRestricted() const;
  bool votingEnabled() const;
  std::int64_t maxAttachmentSize() const;

 private:
  mutable std::mutex mutex_;
  bool conversations_;
  bool attachments_;
  bool ticketForms_;
  bool voting_;
  bool helpCenterRestricted_;
  std::string helpCenterLocale_;
  std::vector<std::string> contactUsTags_;
  std::int64_t maxAttachmentSize_;
};

}  // namespace qvk::emulator
