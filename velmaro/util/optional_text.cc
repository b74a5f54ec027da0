#include "velmaro/util/optional_text.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace velmaro {

OptionalText::OptionalText(std::string_view text) {
  // Texts come from answers, which are far below 4 GiB; a longer one is cut
  // rather than wrapped.
  const auto length =
      static_cast<Length>(std::min<std::size_t>(text.size(), std::numeric_limits<Length>::max()));
  data_ = std::make_unique_for_overwrite<char[]>(sizeof(Length) + length);
  std::memcpy(data_.get(), &length, sizeof length);
  std::memcpy(data_.get() + sizeof length, text.data(), length);
}

OptionalText::OptionalText(const std::optional<std::string>& text) {
  if (text) *this = OptionalText(std::string_view(*text));
}

OptionalText::OptionalText(const OptionalText& other) {
  if (other) *this = OptionalText(*other);
}

OptionalText& OptionalText::operator=(const OptionalText& other) {
  if (this != &other) *this = OptionalText(other);
  return *this;
}

std::string_view OptionalText::operator*() const {
  if (!data_) return {};
  Length length = 0;
  std::memcpy(&length, data_.get(), sizeof length);
  return {data_.get() + sizeof length, length};
}

std::string OptionalText::value_or(std::string_view fallback) const {
  return std::string(data_ ? **this : fallback);
}

std::optional<std::string> OptionalText::toOptional() const {
  if (!data_) return std::nullopt;
  return std::string(**this);
}

bool operator==(const OptionalText& a, const OptionalText& b) {
  if (a.has_value() != b.has_value()) return false;
  return *a == *b;
}

std::ostream& operator<<(std::ostream& out, const OptionalText& text) {
  if (!text) return out << "nullopt";
  return out << *text;
}

}  // namespace velmaro
