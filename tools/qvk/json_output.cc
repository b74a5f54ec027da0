#include "tools/qvk/json_output.h"

#include <boost/json/serialize.hpp>

namespace qvk {

boost::json::value JsonOutput::errorDocument(const quorvel::platform::Error& error) {
  return boost::json::object{
      {"error", boost::json::object{{"domain", error.domain},
                                    {"code", error.code},
                                    {"description", error.localizedDescription()}}}};
}

std::string JsonOutput::serialize(const boost::json::value& document) {
  return boost::json::serialize(document);
}

}  // namespace qvk
