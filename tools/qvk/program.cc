#include "tools/qvk/program.h"

#include "tools/qvk/command_runner.h"
#include "tools/qvk/output.h"
#include "tools/qvk/session.h"
#include "tools/qvk/shell.h"

namespace qvk {

int Program::run(const ParseOutcome& parsed, std::istream& in, std::ostream& out, std::ostream& err,
                 bool interactive) {
  const auto& options = parsed.options;
  auto session = Session::open(options);
  if (!session) {
    Output output(out, err, options.json, options.url.value_or(""));
    return output.error(session.error());
  }
  Output output(out, err, options.json, (*session)->url());
  CommandRunner runner(**session, output);
  int status = 0;
  if (parsed.command.kind == CommandKind::shell) {
    status = Shell(runner, in, out, err, interactive).run();
  } else {
    status = runner.run(parsed.command);
  }
  (*session)->finish();
  return status;
}

}  // namespace qvk
