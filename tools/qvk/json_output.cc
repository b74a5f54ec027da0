#include "tools/qvk/json_output.h"

#include <boost/json/serialize.hpp>

namespace qvk {

boost::json::value JsonOutput::errorDocument(const quorvel::platform::Error& error,
                                             const std::string& hint) {
  boost::json::object body{{"domain", error.domain},
                           {"code", error.code},
                           {"description", error.localizedDescription()}};
  if (!hint.empty()) body["hint"] = hint;
  return boost::json::object{{"error", std::move(body)}};
}

std::string JsonOutput::serialize(const boost::json::value& document) {
  return boost::json::serialize(document);
}

}  // namespace qvk
