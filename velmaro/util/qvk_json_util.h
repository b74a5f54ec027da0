#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <boost/describe.hpp>
#include <boost/json.hpp>
#include <boost/mp11/algorithm.hpp>

#include "velmaro/util/optional_text.h"

namespace velmaro {

// Reading values out of parsed JSON without tripping over JSON null, and
// mapping JSON objects onto records by property name. A record's property
// names are its JSON keys; records list their properties with
// BOOST_DESCRIBE_CLASS (declaration order, own properties only).
class QVKJsonUtil {
 public:
  // The value, or null when it is JSON null.
  static const boost::json::value* cleanJSONVal(const boost::json::value* value) {
    return (value == nullptr || value->is_null()) ? nullptr : value;
  }
  // The value under `key`, or null when the key is missing or holds JSON null.
  static const boost::json::value* cleanJSONVal(const boost::json::object& dict,
                                                std::string_view key) {
    return cleanJSONVal(dict.if_contains(key));
  }
  // JSON null gives an empty array; a missing key gives nothing (deliberately
  // not an empty array); any other value is returned as it is.
  static std::optional<boost::json::value> cleanJSONArrayVal(const boost::json::object& dict,
                                                             std::string_view key) {
    const auto* value = dict.if_contains(key);
    if (value == nullptr) return std::nullopt;
    if (value->is_null()) return boost::json::value(boost::json::array());
    return *value;
  }

  // The names of the properties the record type itself declares, in order.
  template <class T>
  static std::vector<std::string> arrayWithPropertiesOfObject() {
    std::vector<std::string> names;
    boost::mp11::mp_for_each<Members<T>>([&](auto member) { names.emplace_back(member.name); });
    return names;
  }

  // A record made from the keys of `json` that name its properties, in the
  // object's own order; nothing when no key names a property. A value that
  // does not fit the property's type leaves the property unset.
  template <class T>
  static std::optional<T> convertJsonObject(const boost::json::object& json) {
    std::optional<T> result;
    // An element, not a structured binding: clang 14 (the fuzz build) cannot
    // capture a binding in a lambda.
    for (const auto& entry : json) {
      bool named = false;
      boost::mp11::mp_for_each<Members<T>>([&](auto member) {
        if (named || entry.key() != member.name) return;
        named = true;
        if (!result) result.emplace();
        assign((*result).*member.pointer, cleanJSONVal(&entry.value()));
      });
    }
    return result;
  }

  // Each element converted with convertJsonObject; elements that give nothing
  // (or are not objects) are skipped.
  template <class T>
  static std::vector<T> convertArrayOfJsonObjects(const boost::json::array& array) {
    std::vector<T> records;
    for (const auto& element : array) {
      if (!element.is_object()) continue;
      if (auto record = convertJsonObject<T>(element.get_object())) {
        records.push_back(std::move(*record));
      }
    }
    return records;
  }

  // A dictionary of the record's properties by name; absent ones are left out.
  template <class T>
  static boost::json::object convertObjectToDictionary(const T& object) {
    boost::json::object dict;
    boost::mp11::mp_for_each<Members<T>>([&](auto member) {
      if (auto value = toJson(object.*member.pointer)) dict[member.name] = std::move(*value);
    });
    return dict;
  }

  // Sets one property by name; false when the type has no such property.
  template <class T>
  static bool setProperty(T& object, std::string_view name, const boost::json::value* value) {
    bool found = false;
    boost::mp11::mp_for_each<Members<T>>([&](auto member) {
      if (found || name != member.name) return;
      found = true;
      assign(object.*member.pointer, value);
    });
    return found;
  }

 private:
  template <class T>
  using Members = boost::describe::describe_members<T, boost::describe::mod_public |
                                                           boost::describe::mod_protected |
                                                           boost::describe::mod_private>;

  template <class U>
  struct IsOptional : std::is_same<U, OptionalText> {};
  template <class U>
  struct IsOptional<std::optional<U>> : std::true_type {};

  template <class P>
  static void assign(P& property, const boost::json::value* value) {
    if constexpr (std::is_same_v<P, boost::json::value>) {
      property = value != nullptr ? *value : boost::json::value(nullptr);
    } else if constexpr (IsOptional<P>::value) {
      property.reset();
      if (value == nullptr) return;
      auto converted = boost::json::try_value_to<typename P::value_type>(*value);
      if (converted) property = std::move(*converted);
    } else {
      if (value == nullptr) {
        property = P{};
        return;
      }
      auto converted = boost::json::try_value_to<P>(*value);
      if (converted) property = std::move(*converted);
    }
  }

  template <class P>
  static std::optional<boost::json::value> toJson(const P& property) {
    if constexpr (std::is_same_v<P, boost::json::value>) {
      if (property.is_null()) return std::nullopt;
      return property;
    } else if constexpr (IsOptional<P>::value) {
      if (!property) return std::nullopt;
      return boost::json::value_from(*property);
    } else {
      return boost::json::value_from(property);
    }
  }
};

}  // namespace velmaro
