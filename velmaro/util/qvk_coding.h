#pragma once

#include <boost/json/object.hpp>

#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// Archiving of records by property name: the archive is a JSON object whose
// keys are the property names of the record's own class.
class QVKNSCodingUtil {
 public:
  template <class T>
  static void encodeWithCoder(boost::json::object& coder, const T& instance) {
    for (auto& [key, value] : QVKJsonUtil::convertObjectToDictionary(instance)) {
      coder[key] = std::move(value);
    }
  }

  // Every property is set from the archive; one missing there becomes absent.
  template <class T>
  static void decodeWithCoder(const boost::json::object& coder, T& instance) {
    for (const auto& name : QVKJsonUtil::arrayWithPropertiesOfObject<T>()) {
      QVKJsonUtil::setProperty(instance, name, QVKJsonUtil::cleanJSONVal(coder, name));
    }
  }
};

// Base of records stored on disk: archives exactly the properties that the
// concrete class declares itself.
template <class Derived>
class QVKCoding {
 public:
  boost::json::object encodeWithCoder() const {
    boost::json::object coder;
    QVKNSCodingUtil::encodeWithCoder(coder, static_cast<const Derived&>(*this));
    return coder;
  }
  static Derived initWithCoder(const boost::json::object& coder) {
    Derived instance;
    QVKNSCodingUtil::decodeWithCoder(coder, instance);
    return instance;
  }
};

}  // namespace velmaro
