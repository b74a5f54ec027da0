#pragma once

#include <optional>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// One choice of a system field (priority, ticket type, status). Values are
// kept as the dictionary held them (see RawJson).
struct QVKTicketFieldSystemOption {
  std::optional<boost::json::value> name;   // "name"
  std::optional<boost::json::value> value;  // "value"

  static QVKTicketFieldSystemOption initWithDictionary(const boost::json::object& json);
};

BOOST_DESCRIBE_STRUCT(QVKTicketFieldSystemOption, (), (name, value))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKTicketFieldSystemOption& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
