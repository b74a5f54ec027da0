#pragma once

#include <span>
#include <vector>

#include <poll.h>

namespace quorvel::platform {

// Work other than posted tasks that a RunLoop does on its own thread: while
// the loop sleeps it also watches the source's descriptors, and when one of
// them is ready it lets the source handle it there, with no other thread
// woken in between. Every call comes from the thread that pumps the loop.
class RunLoopSource {
 public:
  RunLoopSource() = default;
  RunLoopSource(const RunLoopSource&) = delete;
  RunLoopSource& operator=(const RunLoopSource&) = delete;
  virtual ~RunLoopSource() = default;

  // A pump that may sleep (run, runFor, runUntil) begins or ends on this
  // thread. Pumps nest: a task may pump the loop again.
  virtual void loopEntered() = 0;
  virtual void loopExited() = 0;
  // Before each sleep: appends the descriptors to watch, with poll(2) events.
  virtual void descriptors(std::vector<pollfd>& watched) = 0;
  // After a sleep: the descriptors it appended, with what poll reported.
  virtual void perform(std::span<const pollfd> ready) = 0;
};

}  // namespace quorvel::platform
