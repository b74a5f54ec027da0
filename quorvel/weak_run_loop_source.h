#pragma once

#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "quorvel/platform/run_loop_source.h"

namespace quorvel {

// A run-loop source that hands the loop's calls to `Target` (hostLoopEntered,
// hostLoopExited, hostDescriptors, hostPerform), held weakly: a loop may
// outlive what it drives, and then does nothing for it.
template <class Target>
class WeakRunLoopSource final : public platform::RunLoopSource {
 public:
  explicit WeakRunLoopSource(std::weak_ptr<Target> target) : target_(std::move(target)) {}

  void loopEntered() override {
    if (auto target = target_.lock()) target->hostLoopEntered();
  }
  void loopExited() override {
    if (auto target = target_.lock()) target->hostLoopExited();
  }
  void descriptors(std::vector<pollfd>& watched) override {
    if (auto target = target_.lock()) target->hostDescriptors(watched);
  }
  void perform(std::span<const pollfd> ready) override {
    if (auto target = target_.lock()) target->hostPerform(ready);
  }

 private:
  std::weak_ptr<Target> target_;
};

}  // namespace quorvel
