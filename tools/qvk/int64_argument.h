#pragma once

#include <CLI/CLI.hpp>

namespace qvk {

// Ids and counts given on the command line. CLI11 reads them with strtoll,
// which clamps a number past the 64-bit range to the largest one: an id of
// 99999999999999999999 would name 9223372036854775807, someone else's
// record. This check runs on the text first and refuses such a number as a
// usage error.
class Int64Argument {
 public:
  static CLI::Validator inRange();
};

}  // namespace qvk
