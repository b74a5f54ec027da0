#pragma once

#include <string>

#include <boost/json/value.hpp>

#include "quorvel/platform/error.h"

namespace qvk {

// The JSON documents qvk prints with --json.
class JsonOutput {
 public:
  // {"error": {"domain": ..., "code": ..., "description": ...}}.
  static boost::json::value errorDocument(const quorvel::platform::Error& error);
  // The document as one line of text.
  static std::string serialize(const boost::json::value& document);
};

}  // namespace qvk
