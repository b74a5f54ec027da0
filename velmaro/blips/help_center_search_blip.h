#pragma once

#include <string>

#include <boost/json/object.hpp>

namespace velmaro {

// Payload of the search event: {"query": ...}.
struct HelpCenterSearchBlip {
  std::string query;
  boost::json::object encode() const { return {{"query", query}}; }
};

}  // namespace velmaro
