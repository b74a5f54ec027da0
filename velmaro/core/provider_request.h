#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/platform/error.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/result.h"
#include "quorvel/transport_request.h"
#include "velmaro/core/qvk_dispatcher_response.h"

namespace velmaro {

// The (result, error) callback of a provider operation; exactly one of the
// two is given. An empty std::function is an absent callback.
template <class Result>
using ProviderCallback =
    std::function<void(std::optional<Result>, std::optional<quorvel::platform::Error>)>;

// One provider operation's request, described: where it goes, what it
// announces, and what its answer becomes. ProviderContext::send runs it; an
// operation builds one of these and does nothing else with the network.
template <class Result>
struct ProviderRequest {
  // Turns a successful answer into the operation's result, or an error that
  // is answered like a failed request. Runs on the main queue, once, before
  // the callback is answered: it may also note what the answer carries (the
  // last search, a usage event).
  using Parse = std::function<quorvel::platform::Result<Result>(QVKDispatcherResponse)>;
  // Runs after the answer is queued and before the success notification.
  using Answered = std::function<void(const Result&)>;

  std::string path;  // appended to the base URL as it is
  // The whole URL text instead of the base URL and `path` (a download from a
  // URL the service gave); a text that is not a valid URL is refused.
  std::optional<std::string> url;
  std::string httpMethod = "GET";
  std::optional<std::string> body;
  std::map<std::string, std::string> headers;
  // Posted before sending; nullptr when the operation has already posted it
  // (some announce themselves before resolving their locale).
  const char* starting = nullptr;
  const char* success = nullptr;  // nullptr: nothing is posted
  // Posted in this order with {"error": error} when the request fails.
  std::vector<const char*> failures;
  Parse parse;
  Answered answered;
  // The callback kind's name, for the warning when the callback is absent.
  const char* callbackName = "callback";

  // A conditional request: "If-None-Match" from the entity-tag table is set
  // before sending, and a not-modified answer is not answered (it posts the
  // success notification only with `unmodifiedPostsSuccess`).
  bool entityTag = false;
  bool unmodifiedPostsSuccess = false;
  // What a parse error does besides answering the callback with it.
  enum class ParseFailure {
    failsRequest,  // posts the failure notifications, like a failed request
    postsSuccess,  // posts the success notification all the same
    postsNothing,  // posts nothing
  };
  ParseFailure parseFailure = ParseFailure::failsRequest;
  // Whether a successful answer is answered at all; false ends the call with
  // no callback and no notification. Absent: every answer is.
  std::function<bool(const QVKDispatcherResponse&)> answers;
  // The success notification's user info, made from the result.
  std::function<quorvel::platform::UserInfo(const Result&)> successInfo;
  // The success and failure notifications are posted before the callback
  // is answered instead of after it.
  bool notifiesBeforeAnswer = false;
  // Without a callback a failure posts nothing and nothing is answered (no
  // warning either); a success still posts its notification.
  bool quietWithoutCallback = false;
  // A failure this gives an error for is taken over (the outbox keeps the
  // call to send later): the callback gets the returned error in its place
  // and no failure notification is posted. Absent, or no error: a failure
  // is a failure.
  std::function<std::optional<quorvel::platform::Error>(const quorvel::platform::Error&)>
      keepsFailure;
  // Files, size limit, progress and cancellation of the transfer; null for
  // an ordinary call.
  std::shared_ptr<const quorvel::TransferOptions> transfer;
};

}  // namespace velmaro
