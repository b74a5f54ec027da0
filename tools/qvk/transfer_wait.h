#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "quorvel/transfer_handle.h"
#include "tools/qvk/command_context.h"

namespace qvk {

// One file transfer of a command: the progress bar on standard error (only
// when it is a terminal and not with --json), Ctrl-C, which cancels the
// transfer, and the wait for its answer, which has no fixed limit (the
// transport ends a transfer that stalls). While it lives, SIGINT sets a flag
// instead of ending the process.
class TransferWait {
 public:
  static constexpr int kInterruptedStatus = 130;

  TransferWait(CommandContext& context, std::string label);
  ~TransferWait();
  TransferWait(const TransferWait&) = delete;
  TransferWait& operator=(const TransferWait&) = delete;

  // Draws the bar; empty when there is none.
  quorvel::TransferHandle::Progress progress();
  // Pumps the main queue until `arrived`; Ctrl-C cancels `handle` and the
  // wait goes on for the cancelled answer. Ends the bar's line.
  void wait(const std::shared_ptr<quorvel::TransferHandle>& handle,
            const std::function<bool()>& arrived);
  bool interrupted() const;

 private:
  void draw(std::int64_t done, std::int64_t total);

  CommandContext& context_;
  std::string label_;
  bool bar_;
  bool drawn_ = false;
};

}  // namespace qvk
