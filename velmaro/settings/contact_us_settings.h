#pragma once

#include <string>
#include <vector>

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/settings/coding_keys.h"

namespace velmaro {

// Tags the account adds to every request made from the app.
class ContactUsSettings {
 public:
  enum class Key { support, tags, contactUs };
  static constexpr CodingKeys<Key, 3> kCodingKeys{
      {{{Key::support, "support"}, {Key::tags, "tags"}, {Key::contactUs, "contact_us"}}}};

  ContactUsSettings() = default;
  static quorvel::platform::Result<ContactUsSettings> decode(const boost::json::value& document);
  static ContactUsSettings defaultValue() { return ContactUsSettings(); }

  const std::vector<std::string>& tags() const { return tags_; }

 private:
  std::vector<std::string> tags_;
};

using QVKContactUsSettings = ContactUsSettings;

}  // namespace velmaro
