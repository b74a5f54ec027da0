#pragma once

#include <boost/json/object.hpp>

namespace velmaro {

// The payload type of events that carry none: an empty keyed container.
struct NoActionBlip {
  boost::json::object encode() const { return {}; }
};

}  // namespace velmaro
