#include "tools/qvk/settings_view.h"

#include <boost/json/serialize.hpp>

namespace qvk {

using boost::json::object;

object SettingsView::toJson(const velmaro::SupportSettings& s) {
  return object{{"neverRequestEmail", s.neverRequestEmail()},
                {"showClosedRequests", s.showClosedRequests()},
                {"showReferrerLogo", s.showReferrerLogo()},
                {"referrerUrl", s.referrerUrl()},
                {"systemMessage", s.systemMessage()},
                {"conversationSettings", toJson(s.conversationSettings())},
                {"attachmentSettings", toJson(s.attachmentSettings())},
                {"ticketFormsSettings", toJson(s.ticketFormsSettings())},
                {"contactUsSettings", toJson(s.contactUsSettings())}};
}

object SettingsView::toJson(const velmaro::ConversationsSettings& s) {
  return object{{"enabled", s.enabled()}};
}

object SettingsView::toJson(const velmaro::AttachmentSettings& s) {
  return object{{"enabled", s.enabled()}, {"maxAttachmentSize", s.maxAttachmentSize()}};
}

object SettingsView::toJson(const velmaro::TicketFormsSettings& s) {
  return object{{"available", s.available()}};
}

object SettingsView::toJson(const velmaro::ContactUsSettings& s) {
  boost::json::array tags;
  for (const auto& tag : s.tags()) tags.emplace_back(tag);
  return object{{"tags", std::move(tags)}};
}

object SettingsView::toJson(const velmaro::HelpCenterSettings& s) {
  return object{{"helpCenterArticleVotingEnabled", s.helpCenterArticleVotingEnabled()},
                {"enabled", s.enabled()},
                {"locale", s.locale()}};
}

namespace {

std::string display(const boost::json::value& value) {
  if (value.is_string()) return std::string(value.get_string());
  if (value.is_array()) {
    std::string joined;
    for (const auto& element : value.get_array()) {
      if (!joined.empty()) joined += ", ";
      joined += display(element);
    }
    return joined;
  }
  return boost::json::serialize(value);
}

void collect(const object& json, const std::string& prefix,
             std::vector<std::pair<std::string, std::string>>& rows) {
  for (const auto& [key, value] : json) {
    std::string name = prefix + std::string(key);
    if (value.is_object()) {
      collect(value.get_object(), name + ".", rows);
    } else {
      rows.emplace_back(name, display(value));
    }
  }
}

}  // namespace

std::vector<std::pair<std::string, std::string>> SettingsView::rows(const object& json) {
  std::vector<std::pair<std::string, std::string>> rows;
  collect(json, "", rows);
  return rows;
}

}  // namespace qvk
