#pragma once

#include <string>

#include "tools/qvk/output.h"
#include "tools/qvk/session.h"

namespace qvk {

// `qvk settings [GROUP]`: asks the matching settings provider and prints the
// record's properties. No record (the download failed and nothing was kept,
// or the document did not decode) is an error.
class SettingsCommands {
 public:
  SettingsCommands(Session& session, Output& output) : session_(session), output_(output) {}

  int run(const std::string& group);

 private:
  template <class Record, class Fetch>
  int show(Fetch fetch);

  Session& session_;
  Output& output_;
};

}  // namespace qvk
