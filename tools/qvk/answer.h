#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "quorvel/platform/error.h"

namespace qvk {

// Collects what a library callback answers. The callback may run after the
// command gave up waiting (in a shell session the main queue is pumped
// again), so the state lives behind a shared pointer that the callback holds.
template <class R>
class Answer {
 public:
  struct State {
    std::optional<R> value;
    std::optional<quorvel::platform::Error> error;
    int count = 0;
  };

  // A (result, error) callback; only the first answer is kept, later ones are
  // counted.
  std::function<void(std::optional<R>, std::optional<quorvel::platform::Error>)> callback() const {
    return [state = state_](std::optional<R> value, std::optional<quorvel::platform::Error> error) {
      if (++state->count > 1) return;
      state->value = std::move(value);
      state->error = std::move(error);
    };
  }

  // A result-only callback, as the settings providers take.
  std::function<void(std::optional<R>)> valueCallback() const {
    return [state = state_](std::optional<R> value) {
      if (++state->count > 1) return;
      state->value = std::move(value);
    };
  }

  int count() const { return state_->count; }
  bool arrived() const { return state_->count > 0; }
  const std::optional<R>& value() const { return state_->value; }
  // The value itself, moved out: a long list is not copied to be printed.
  std::optional<R> takeValue() { return std::move(state_->value); }
  const std::optional<quorvel::platform::Error>& error() const { return state_->error; }

 private:
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace qvk
