#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <boost/json/value.hpp>
#include <boost/json/value_from.hpp>

#include "quorvel/platform/error.h"
#include "tools/qvk/error_hints.h"
#include "tools/qvk/table.h"

namespace qvk {

// Where a command's result goes: text (tables, messages) or one JSON
// document on standard output. Errors go as text to standard error, or with
// --json as a JSON error document to standard output; a hint of what to do
// next goes to standard error either way.
class Output {
 public:
  Output(std::ostream& out, std::ostream& err, bool json, ErrorHints::Context hints)
      : out_(out), err_(err), json_(json), hints_(std::move(hints)) {}

  bool json() const { return json_; }
  std::ostream& text() { return out_; }
  // Messages that are not the result: usage errors, and the shell's own.
  std::ostream& errorText() { return err_; }

  void document(const boost::json::value& document);
  // The records as one JSON array, the same text as
  // document(value_from(records)), written a record at a time so that a long
  // list is never a second whole document in memory.
  template <class R>
  void list(const std::vector<R>& records) {
    out_ << '[';
    for (std::size_t i = 0; i < records.size(); ++i) {
      if (i != 0) out_ << ',';
      writeJson(boost::json::value_from(records[i]));
    }
    out_ << "]\n";
    out_.flush();
  }
  void table(const Table& table);
  // Returns the exit status for an error, 1.
  int error(const quorvel::platform::Error& error);

 private:
  void writeJson(const boost::json::value& value);

  std::ostream& out_;
  std::ostream& err_;
  bool json_;
  ErrorHints::Context hints_;
};

}  // namespace qvk
