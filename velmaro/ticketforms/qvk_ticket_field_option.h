#pragma once

#include <optional>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// One choice of a custom drop-down, multi-select or tagger field. Values are
// kept as the dictionary held them (see RawJson).
struct QVKTicketFieldOption {
  std::optional<boost::json::value> fieldOptionId;  // "id", a number
  std::optional<boost::json::value> name;           // "name", the label shown
  std::optional<boost::json::value> value;          // "value", the tag value sent
  bool isDefaultValue = false;                      // "default"; false when missing

  static QVKTicketFieldOption initWithDictionary(const boost::json::object& json);
};

BOOST_DESCRIBE_STRUCT(QVKTicketFieldOption, (), (fieldOptionId, name, value, isDefaultValue))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKTicketFieldOption& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
