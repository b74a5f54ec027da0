#include "emulator/settings_state.h"

#include <boost/json.hpp>

namespace qvk::emulator {

namespace json = boost::json;

SettingsState::SettingsState(const EmulatorOptions& options)
    : conversations_(options.conversations),
      attachments_(options.attachments),
      ticketForms_(options.ticketForms),
      voting_(options.voting),
      helpCenterRestricted_(options.helpCenterRestricted),
      helpCenterLocale_(options.helpCenterLocale),
      contactUsTags_(options.contactUsTags),
      maxAttachmentSize_(options.maxAttachmentSize) {}

json::object SettingsState::document() const {
  std::lock_guard guard(mutex_);
  json::array tags;
  for (const auto& t : contactUsTags_) tags.emplace_back(t);
  // referrer_url is left out, as for an account that configured none.
  json::object support{
      {"never_request_email", true},
      {"show_closed_requests", true},
      {"show_referrer_logo", false},
      {"system_message", ""},
      {"conversations", json::object{{"enabled", conversations_}}},
      {"attachments",
       json::object{{"enabled", attachments_}, {"max_attachment_size", maxAttachmentSize_}}},
      {"ticket_forms", json::object{{"available", ticketForms_}}},
      {"contact_us", json::object{{"tags", std::move(tags)}}},
  };
  return json::object{
      {"support", std::move(support)},
      {"help_center", json::object{{"enabled", true},
                                   {"locale", helpCenterLocale_},
                                   {"help_center_article_voting_enabled", voting_}}},
  };
}

json::object SettingsState::toggles() const {
  std::lock_guard guard(mutex_);
  json::array tags;
  for (const auto& t : contactUsTags_) tags.emplace_back(t);
  return json::object{{"conversations", conversations_},
                      {"attachments", attachments_},
                      {"ticket_forms", ticketForms_},
                      {"voting", voting_},
                      {"help_center_restricted", helpCenterRestricted_},
                      {"hc_locale", helpCenterLocale_},
                      {"contact_us_tags", std::move(tags)},
                      {"max_attachment_size", maxAttachmentSize_}};
}

namespace {

// Checks every key before anything changes, so a bad patch changes nothing.
std::string checkPatch(const json::object& patch) {
  for (const auto& [key, value] : patch) {
    if (key == "conversations" || key == "attachments" || key == "ticket_forms" ||
        key == "voting" || key == "help_center_restricted") {
      if (!value.is_bool()) return std::string(key) + " must be a boolean";
    } else if (key == "hc_locale") {
      if (!value.is_string() || value.as_string().empty())
        return "hc_locale must be a non-empty string";
    } else if (key == "contact_us_tags") {
      if (!value.is_array()) return "contact_us_tags must be an array of strings";
      for (const auto& t : value.as_array())
        if (!t.is_string()) return "contact_us_tags must be an array of strings";
    } else if (key == "max_attachment_size") {
      if (!value.is_int64() || value.as_int64() < 0)
        return "max_attachment_size must be a non-negative integer";
    } else {
      return "unknown setting " + std::string(key);
    }
  }
  return {};
}

}  // namespace

std::string SettingsState::apply(const json::object& patch) {
  if (auto error = checkPatch(patch); !error.empty()) return error;
  std::lock_guard guard(mutex_);
  for (const auto& [key, value] : patch) {
    if (key == "conversations") conversations_ = value.as_bool();
    if (key == "attachments") attachments_ = value.as_bool();
    if (key == "ticket_forms") ticketForms_ = value.as_bool();
    if (key == "voting") voting_ = value.as_bool();
    if (key == "help_center_restricted") helpCenterRestricted_ = value.as_bool();
    if (key == "hc_locale") helpCenterLocale_ = std::string(value.as_string());
    if (key == "max_attachment_size") maxAttachmentSize_ = value.as_int64();
    if (key == "contact_us_tags") {
      contactUsTags_.clear();
      for (const auto& t : value.as_array()) contactUsTags_.emplace_back(t.as_string());
    }
  }
  return {};
}

bool SettingsState::helpCenterRestricted() const {
  std::lock_guard guard(mutex_);
  return helpCenterRestricted_;
}

bool SettingsState::votingEnabled() const {
  std::lock_guard guard(mutex_);
  return voting_;
}

std::int64_t SettingsState::maxAttachmentSize() const {
  std::lock_guard guard(mutex_);
  return maxAttachmentSize_;
}

}  // namespace qvk::emulator
