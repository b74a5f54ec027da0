#include "tools/qvk/table.h"

#include <algorithm>

#include "tools/qvk/terminal_text.h"

namespace qvk {

namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";  // U+2026

bool isContinuationByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

Table::Table(std::vector<Column> columns, std::string singular, std::string plural)
    : columns_(std::move(columns)), singular_(std::move(singular)), plural_(std::move(plural)) {}

void Table::addRow(std::vector<std::string> cells) {
  rows_.push_back(cleaned(std::move(cells)));
}

void Table::setRows(std::size_t count, RowSource row) {
  rows_.clear();
  sourceCount_ = count;
  source_ = std::move(row);
}

std::vector<std::string> Table::cleaned(std::vector<std::string> cells) const {
  cells.resize(columns_.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    cells[i] = truncate(TerminalText::printable(cells[i]), columns_[i].maxWidth);
  }
  return cells;
}

void Table::forEachRow(const std::function<void(const std::vector<std::string>&)>& visit) const {
  if (!source_) {
    for (const auto& row : rows_) visit(row);
    return;
  }
  for (std::size_t i = 0; i < sourceCount_; ++i) visit(cleaned(source_(i)));
}

std::size_t Table::displayWidth(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !isContinuationByte(c); }));
}

std::string Table::truncate(std::string_view text, std::size_t width) {
  if (displayWidth(text) <= width) return std::string(text);
  if (width == 0) return {};
  // Keep width - 1 characters, then the ellipsis.
  std::size_t kept = 0;
  std::size_t end = 0;
  while (end < text.size()) {
    if (!isContinuationByte(text[end])) {
      if (kept == width - 1) break;
      ++kept;
    }
    ++end;
  }
  std::string cut(text.substr(0, end));
  while (!cut.empty() && cut.back() == ' ') cut.pop_back();
  return cut + std::string(kEllipsis);
}

std::vector<std::size_t> Table::columnWidths() const {
  std::vector<std::size_t> widths;
  for (const auto& column : columns_) widths.push_back(displayWidth(column.header));
  forEachRow([&](const std::vector<std::string>& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
  });
  return widths;
}

void Table::printRow(std::ostream& out, const std::vector<std::string>& cells,
                     const std::vector<std::size_t>& widths) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    std::string padding(widths[i] - displayWidth(cells[i]), ' ');
    if (i > 0) line += "  ";
    if (columns_[i].alignRight) {
      line += padding + cells[i];
    } else {
      line += cells[i] + padding;
    }
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  out << line << '\n';
}

void Table::print(std::ostream& out) const {
  auto widths = columnWidths();
  const auto count = rowCount();
  if (count != 0) {
    std::vector<std::string> headers;
    for (const auto& column : columns_) headers.push_back(column.header);
    printRow(out, headers, widths);
    forEachRow([&](const std::vector<std::string>& row) { printRow(out, row, widths); });
  }
  out << count << ' ' << (count == 1 ? singular_ : plural_) << '\n';
}

}  // namespace qvk
