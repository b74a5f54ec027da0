#include "emulator/sql_row.h"

namespace qvk::emulator {

std::int64_t SqlRow::integer(std::size_t i) const {
  const auto& v = values_[i];
  if (const auto* n = std::get_if<std::int64_t>(&v)) return *n;
  if (const auto* d = std::get_if<double>(&v)) return static_cast<std::int64_t>(*d);
  return 0;
}

double SqlRow::real(std::size_t i) const {
  const auto& v = values_[i];
  if (const auto* d = std::get_if<double>(&v)) return *d;
  if (const auto* n = std::get_if<std::int64_t>(&v)) return static_cast<double>(*n);
  return 0;
}

std::string SqlRow::text(std::size_t i) const {
  const auto& v = values_[i];
  if (const auto* s = std::get_if<std::string>(&v)) return *s;
  if (const auto* b = std::get_if<Blob>(&v)) return b->bytes;
  if (const auto* n = std::get_if<std::int64_t>(&v)) return std::to_string(*n);
  return {};
}

std::optional<std::int64_t> SqlRow::optionalInteger(std::size_t i) const {
  if (isNull(i)) return std::nullopt;
  return integer(i);
}

}  // namespace qvk::emulator
