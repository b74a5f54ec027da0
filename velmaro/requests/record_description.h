#pragma once

#include <string>
#include <string_view>

#include "velmaro/util/string_format.h"

namespace velmaro {

// The debug text of a request record: its title and a colon on the first
// line, then one line per field, the name followed by the value in square
// brackets ("subject [Printer on fire]"; an absent value is "(null)").
class RecordDescription {
 public:
  explicit RecordDescription(std::string_view title) : text_(std::string(title) + ":\n") {}

  template <class T>
  RecordDescription& line(std::string_view name, const T& value) {
    text_ += std::string(name) + " [" + Describe::of(value) + "]\n";
    return *this;
  }

  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace velmaro
