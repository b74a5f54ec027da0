#include "tools/qvk/command_runner.h"

#include "tools/qvk/hc_commands.h"
#include "tools/qvk/settings_commands.h"

namespace qvk {

int CommandRunner::run(const ParsedCommand& command) {
  switch (command.kind) {
    case CommandKind::settings:
      return SettingsCommands(session_, output_).run(command.settingsGroup);
    case CommandKind::shell:
      return 2;  // the caller runs the shell
    default:
      return HcCommands(session_, output_).run(command);
  }
}

}  // namespace qvk
