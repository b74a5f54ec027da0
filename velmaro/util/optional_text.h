#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace velmaro {

// A text that may be absent, held in one pointer. std::optional<std::string>
// takes 40 bytes whether the text is there or not, and a category has eight
// of them: in a long list of small categories the empty texts cost ten times
// the answer they came from. This one takes 8 bytes when absent, and the
// length and bytes in one allocation when present.
//
// It reads like the std::optional<std::string> it stands for, except that
// the text is a std::string_view into it (valid while it lives and is not
// assigned). Not safe to change from two threads at once, like a string.
class OptionalText {
 public:
  using value_type = std::string;

  OptionalText() = default;
  OptionalText(std::nullopt_t) {}        // NOLINT(google-explicit-constructor)
  OptionalText(std::string_view text);   // NOLINT(google-explicit-constructor)
  OptionalText(const std::string& text)  // NOLINT(google-explicit-constructor)
      : OptionalText(std::string_view(text)) {}
  OptionalText(const char* text)  // NOLINT(google-explicit-constructor)
      : OptionalText(std::string_view(text)) {}
  OptionalText(const std::optional<std::string>& text);  // NOLINT(google-explicit-constructor)

  OptionalText(const OptionalText& other);
  OptionalText& operator=(const OptionalText& other);
  OptionalText(OptionalText&&) noexcept = default;
  OptionalText& operator=(OptionalText&&) noexcept = default;
  ~OptionalText() = default;

  bool has_value() const { return data_ != nullptr; }
  explicit operator bool() const { return has_value(); }
  // The text; empty when absent.
  std::string_view operator*() const;
  std::string value_or(std::string_view fallback) const;
  std::optional<std::string> toOptional() const;
  void reset() { data_.reset(); }

  friend bool operator==(const OptionalText& a, const OptionalText& b);
  friend bool operator==(const OptionalText& a, const std::optional<std::string>& b) {
    return a == OptionalText(b);
  }
  friend bool operator==(const OptionalText& a, const char* b) {
    return a.has_value() && *a == std::string_view(b);
  }
  friend bool operator==(const OptionalText& a, const std::string& b) {
    return a.has_value() && *a == b;
  }
  friend std::ostream& operator<<(std::ostream& out, const OptionalText& text);

 private:
  using Length = std::uint32_t;
  // The length, then the bytes; null when absent.
  std::unique_ptr<char[]> data_;
};

}  // namespace velmaro
