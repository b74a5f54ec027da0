#pragma once

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/settings/coding_keys.h"

namespace velmaro {

// Whether ticket forms are available on the account's plan.
class TicketFormsSettings {
 public:
  enum class Key { support, available, ticketForms };
  static constexpr CodingKeys<Key, 3> kCodingKeys{{{{Key::support, "support"},
                                                    {Key::available, "available"},
                                                    {Key::ticketForms, "ticket_forms"}}}};

  TicketFormsSettings() = default;
  static quorvel::platform::Result<TicketFormsSettings> decode(const boost::json::value& document);
  static TicketFormsSettings defaultValue() { return TicketFormsSettings(); }

  bool available() const { return available_; }

 private:
  bool available_ = false;
};

using QVKTicketFormsSettings = TicketFormsSettings;

}  // namespace velmaro
