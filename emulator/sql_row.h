#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace qvk::emulator {

// Raw bytes, bound and read as an SQLite BLOB rather than TEXT.
struct Blob {
  std::string bytes;
};

using SqlValue = std::variant<std::nullptr_t, std::int64_t, double, std::string, Blob>;

// One result row; columns in SELECT order.
class SqlRow {
 public:
  explicit SqlRow(std::vector<SqlValue> values) : values_(std::move(values)) {}
  bool isNull(std::size_t i) const { return std::holds_alternative<std::nullptr_t>(values_[i]); }
  std::int64_t integer(std::size_t i) const;
  double real(std::size_t i) const;
  // TEXT and BLOB columns alike; NULL gives "".
  std::string text(std::size_t i) const;
  std::optional<std::int64_t> optionalInteger(std::size_t i) const;

 private:
  std::vector<SqlValue> values_;
};

}  // namespace qvk::emulator
