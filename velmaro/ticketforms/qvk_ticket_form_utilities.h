#pragma once

#include <string_view>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

// Class operations over ticket forms and their fields. No state: callable
// from any thread.
class QVKTicketFormUtilities {
 public:
  // One record per element of the array under `key`, each made with the
  // record's initWithDictionary (an element that is not an object is read as
  // an empty one), in order. A missing key, or a value that is not an array,
  // gives an empty list.
  template <class Record>
  static std::vector<Record> parseArrayFromDictionary(const boost::json::object& json,
                                                      std::string_view key) {
    return JsonValueConversion::parseList<Record>(json, key, &Record::initWithDictionary);
  }
};

}  // namespace velmaro
