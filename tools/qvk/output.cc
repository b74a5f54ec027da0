#include "tools/qvk/output.h"

#include "tools/qvk/error_hints.h"
#include "tools/qvk/json_output.h"

namespace qvk {

void Output::document(const boost::json::value& document) {
  out_ << JsonOutput::serialize(document) << '\n';
  out_.flush();
}

void Output::writeJson(const boost::json::value& value) {
  out_ << JsonOutput::serialize(value);
}

void Output::table(const Table& table) {
  table.print(out_);
  out_.flush();
}

int Output::error(const quorvel::platform::Error& error) {
  auto hint = ErrorHints::hintFor(error, hints_);
  if (json_) {
    // The document is for scripts; the hint is for the person running them.
    document(JsonOutput::errorDocument(error));
    if (!hint.empty()) err_ << "hint: " << hint << '\n' << std::flush;
  } else {
    err_ << "error: " << error.localizedDescription() << " (domain " << error.domain << ", code "
         << error.code << ")\n";
    if (!hint.empty()) err_ << "hint: " << hint << '\n';
    err_.flush();
  }
  return 1;
}

}  // namespace qvk
