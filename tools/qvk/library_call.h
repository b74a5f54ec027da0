#pragma once

#include <functional>
#include <optional>

#include "quorvel/platform/error.h"
#include "quorvel/platform/result.h"
#include "tools/qvk/answer.h"
#include "tools/qvk/client_errors.h"
#include "tools/qvk/session.h"

namespace qvk {

// The opening that every command shares: start one library call, pump the
// session's main queue until it answers, and turn what went wrong into the
// one error to report.
class LibraryCall {
 public:
  using Error = quorvel::platform::Error;
  template <class T>
  using Callback = std::function<void(std::optional<T>, std::optional<Error>)>;
  template <class T>
  using Start = std::function<void(Callback<T>)>;
  template <class T>
  using StartForValue = std::function<void(std::function<void(std::optional<T>)>)>;
  // Names an error after which the library answers the same call once more.
  using AnswersTwice = bool (*)(const Error&);

  // The answered value (T{} when the answer held none), or the error: the one
  // answered, or qvk's own when nothing came within the answer timeout. After
  // an error that `answersTwice` names it also waits for the second answer,
  // so that the command leaves nothing of its own in flight.
  template <class T>
  static quorvel::platform::Result<T> await(Session& session, const Start<T>& start,
                                            AnswersTwice answersTwice = nullptr) {
    Answer<T> answer;
    start(answer.callback());
    if (!session.waitUntil([&] { return answer.arrived(); })) {
      return ClientErrors::noAnswer(session.answerTimeout());
    }
    if (!answer.error()) return answer.takeValue().value_or(T{});
    if (answersTwice != nullptr && answersTwice(*answer.error())) {
      session.waitUntil([&] { return answer.count() >= 2; });
    }
    return *answer.error();
  }

  // For calls that answer a value alone (the settings providers), where no
  // value is the error `none`.
  template <class T>
  static quorvel::platform::Result<T> awaitValue(Session& session, const StartForValue<T>& start,
                                                 const Error& none) {
    Answer<T> answer;
    start(answer.valueCallback());
    if (!session.waitUntil([&] { return answer.arrived(); })) {
      return ClientErrors::noAnswer(session.answerTimeout());
    }
    if (!answer.value()) return none;
    return *answer.value();
  }
};

}  // namespace qvk
