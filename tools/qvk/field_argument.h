#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmaro/requests/custom_field.h"

namespace qvk {

// One `--field ID=VALUE` of `qvk requests create`. VALUE is taken as JSON
// when the whole of it parses as JSON (`true`, `42`, `["a","b"]`, `null`),
// else as the string it is, so that `--field 7=hello` needs no quotes.
class FieldArgument {
 public:
  // The field, or none when ID is not a decimal 64-bit integer or there is
  // no `=`.
  static std::optional<velmaro::CustomField> parse(std::string_view text);
  // CLI11's check: empty when `text` parses, else what is wrong with it.
  static std::string check(const std::string& text);
};

}  // namespace qvk
