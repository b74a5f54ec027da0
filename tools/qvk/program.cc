#include "tools/qvk/program.h"

#include "tools/qvk/output.h"
#include "tools/qvk/session.h"

namespace qvk {

int Program::run(const ParseOutcome& parsed, int inputFd, std::ostream& out, std::ostream& err,
                 bool interactive) {
  const auto& options = parsed.options;
  auto session = Session::open(options);
  const ErrorHints::Context hints{options.url.value_or(""), options.jwt.has_value()};
  Output output(out, err, options.json, hints);
  if (!session) return output.error(session.error());
  CommandContext context{**session, output, inputFd, interactive};
  const int status = parsed.command->run(context);
  (*session)->finish();
  return status;
}

}  // namespace qvk
