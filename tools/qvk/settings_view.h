#pragma once

#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/settings/help_center_settings.h"
#include "velmaro/settings/support_settings.h"

namespace qvk {

// The settings records as JSON keyed by their property names, and as
// (property, value) rows for the table.
class SettingsView {
 public:
  static boost::json::object toJson(const velmaro::SupportSettings& settings);
  static boost::json::object toJson(const velmaro::ConversationsSettings& settings);
  static boost::json::object toJson(const velmaro::AttachmentSettings& settings);
  static boost::json::object toJson(const velmaro::TicketFormsSettings& settings);
  static boost::json::object toJson(const velmaro::ContactUsSettings& settings);
  static boost::json::object toJson(const velmaro::HelpCenterSettings& settings);

  // Nested objects flattened to "outer.inner" names, arrays joined with ", ".
  static std::vector<std::pair<std::string, std::string>> rows(const boost::json::object& json);
};

}  // namespace qvk
