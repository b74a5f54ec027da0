#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace qvk {

// A plain-text table: a header row, aligned columns separated by two spaces,
// cells wider than their column's limit cut with an ellipsis, and a count
// line ("3 categories"). Widths count characters, not bytes, so accented
// titles line up.
class Table {
 public:
  struct Column {
    std::string header;
    std::size_t maxWidth = 40;
    bool alignRight = false;
  };

  // `singular` and `plural` name the rows in the count line.
  Table(std::vector<Column> columns, std::string singular, std::string plural);

  // Missing cells are blank, extra cells are dropped.
  void addRow(std::vector<std::string> cells);
  // Rows made when the table is printed instead of kept: `row(i)` is called
  // twice for each of `count` rows (to measure the columns, then to print),
  // so a list of hundreds of thousands of records prints without a copy of
  // its cells. What `row` reads must live until print() returns. Replaces
  // the rows added before.
  using RowSource = std::function<std::vector<std::string>(std::size_t)>;
  void setRows(std::size_t count, RowSource row);
  std::size_t rowCount() const { return source_ ? sourceCount_ : rows_.size(); }

  void print(std::ostream& out) const;

  // Characters (UTF-8 code points) in `text`.
  static std::size_t displayWidth(std::string_view text);
  // `text` cut to at most `width` characters, the last one an ellipsis when cut.
  static std::string truncate(std::string_view text, std::size_t width);

 private:
  std::vector<std::string> cleaned(std::vector<std::string> cells) const;
  void forEachRow(const std::function<void(const std::vector<std::string>&)>& visit) const;
  std::vector<std::size_t> columnWidths() const;
  void printRow(std::ostream& out, const std::vector<std::string>& cells,
                const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns_;
  std::string singular_;
  std::string plural_;
  std::vector<std::vector<std::string>> rows_;
  RowSource source_;
  std::size_t sourceCount_ = 0;
};

}  // namespace qvk
