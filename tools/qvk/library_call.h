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

  // For the settings providers, which answer a value alone. No value is the
  // settings download's own error (an HTTP status, a refused connection),
  // which the core keeps for this; when the download succeeded, the record
  // did not decode: ClientErrors::noSettings.
  template <class T>
  static quorvel::platform::Result<T> awaitSettings(Session& session,
                                                    const StartForValue<T>& start) {
    Answer<T> answer;
    start(answer.valueCallback());
    if (!session.waitUntil([&] { return answer.arrived(); })) {
      return ClientErrors::noAnswer(session.answerTimeout());
    }
    if (answer.value()) return *answer.value();
    const auto& settings = session.core()->providerModule().settings;
    auto failure = settings ? settings->lastDownloadFailure() : std::nullopt;
    return failure.value_or(ClientErrors::noSettings());
  }
};

}  // namespace qvk
