#pragma once

#include <string>

#include <boost/json/object.hpp>

namespace velmaro {

// Payload of the request events: {"requestId": ...}.
struct RequestUserAction {
  std::string requestId;
  boost::json::object encode() const { return {{"requestId", requestId}}; }
};

}  // namespace velmaro
