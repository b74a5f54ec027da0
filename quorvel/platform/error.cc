#include "quorvel/platform/error.h"

#include <boost/json/serialize.hpp>

namespace quorvel::platform {

Error::Error(std::string domain_, long code_, boost::json::object userInfo_)
    : domain(std::move(domain_)), code(code_), userInfo(std::move(userInfo_)) {}

Error Error::withDescription(std::string domain, long code, std::string description) {
  boost::json::object info;
  info[kLocalizedDescriptionKey] = description;
  return Error(std::move(domain), code, std::move(info));
}

std::string Error::localizedDescription() const {
  if (const auto* d = userInfo.if_contains(kLocalizedDescriptionKey); d && d->is_string()) {
    return std::string(d->get_string());
  }
  return "The operation couldn't be completed. (" + domain + " error " + std::to_string(code) +
         ".)";
}

std::string Error::debugDescription() const {
  return "Error Domain=" + domain + " Code=" + std::to_string(code) + " \"" +
         localizedDescription() + "\" UserInfo=" + boost::json::serialize(userInfo);
}

}  // namespace quorvel::platform
