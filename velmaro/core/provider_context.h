#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quorvel/platform/error.h"
#include "quorvel/platform/url.h"
#include "quorvel/platform/url_request.h"
#include "quorvel/quorvel.h"
#include "velmaro/core/provider_request.h"
#include "velmaro/core/qvk_api_dispatcher.h"
#include "velmaro/util/qvk_validator.h"

namespace velmaro {

// What a provider operation needs once its call has returned: the core object
// and the provider's address as the sender of its notifications. Operations
// copy it into their completions instead of capturing the provider, so a
// provider may go away with calls in flight.
//
// Callbacks and notifications are always delivered asynchronously on the core
// object's main queue, never inside the call that started them.
class ProviderContext {
 public:
  using Error = quorvel::platform::Error;

  ProviderContext(std::shared_ptr<quorvel::Quorvel> core, const void* sender)
      : core_(std::move(core)), sender_(sender) {}

  // The one send path: posts the starting notification, sends the request and
  // answers `cb` with what `request.parse` makes of the answer, then posts the
  // success notification; a failure is answered and posts the failure
  // notifications, each with {"error": error}.
  template <class Result>
  void send(ProviderRequest<Result> request, ProviderCallback<Result> cb) const;

  // True when the arguments fail validation: the failure is logged under the
  // operation's full name and answered to `cb` (warning under `callbackName`
  // when it is absent); the operation must stop and send nothing.
  template <class Result>
  bool shouldStopAfterHandlingParameters(const VariableBindings& bindings,
                                         std::string_view operation,
                                         const ProviderCallback<Result>& cb,
                                         const char* callbackName) const;

  // Calls `cb` on the main queue with the two arguments; an absent callback
  // is logged as "Ignoring attempt to respond on a nil <callbackName>".
  template <class Result>
  void answerOnMainThread(const char* callbackName, ProviderCallback<Result> cb,
                          std::optional<Result> result, std::optional<Error> error) const;

  // The same context posting its notifications with no sender.
  ProviderContext withoutSender() const { return ProviderContext(core_, nullptr); }
  const std::shared_ptr<quorvel::Quorvel>& core() const { return core_; }

  // Asynchronously on the main queue of the core object.
  void onMainThread(std::function<void()> task) const;
  // `name` with this context's sender, and {"error": error} when one is given.
  // Further entries of `info` are posted with it.
  void postToNotificationCenterOnMainThread(std::string name,
                                            std::optional<Error> error = std::nullopt,
                                            quorvel::platform::UserInfo info = {}) const;

 private:
  // Fetched anew at each use: the shared dispatcher follows the last core
  // object handed to it.
  std::shared_ptr<QVKAPIDispatcher> dispatcher() const;
  // The base URL string with `path` appended as it is (no separator added);
  // nothing when the joined text is not a valid URL.
  std::optional<quorvel::platform::Url> urlFromString(std::string_view path) const;
  quorvel::platform::URLRequest baseRequestWithURL(std::string_view path,
                                                   std::string httpMethod) const;
  // The request's own URL when it has one, else the base URL and its path.
  template <class Result>
  quorvel::platform::URLRequest urlRequestFor(ProviderRequest<Result>& request) const {
    if (!request.url) return baseRequestWithURL(request.path, std::move(request.httpMethod));
    return quorvel::platform::URLRequest(quorvel::platform::Url::make(*request.url),
                                         std::move(request.httpMethod));
  }
  void executeRequestNoBlock(quorvel::platform::URLRequest request,
                             QVKAPIDispatcher::OnSuccess onSuccess,
                             QVKAPIDispatcher::OnError onError,
                             std::shared_ptr<const quorvel::TransferOptions> transfer) const;
  // Logs the failed validation; the error to answer when there is one.
  std::optional<Error> validationFailure(const VariableBindings& bindings,
                                         std::string_view operation) const;
  static void warnAbsentCallback(const char* callbackName);
  // A success that posts its notification first, or has no callback to
  // answer (and then says nothing of it).
  template <class Result>
  void answerInOrder(const ProviderRequest<Result>& request, const ProviderCallback<Result>& cb,
                     Result result, quorvel::platform::UserInfo info) const {
    if (request.success != nullptr) {
      postToNotificationCenterOnMainThread(request.success, std::nullopt, std::move(info));
    }
    if (cb) answerOnMainThread<Result>(request.callbackName, cb, std::move(result), std::nullopt);
  }
  // The entity-tag table's part of a conditional request.
  static void addEntityTag(quorvel::platform::URLRequest& request);
  static bool unmodified(const QVKDispatcherResponse& response);

  std::shared_ptr<quorvel::Quorvel> core_;
  const void* sender_;
};

template <class Result>
void ProviderContext::answerOnMainThread(const char* callbackName, ProviderCallback<Result> cb,
                                         std::optional<Result> result,
                                         std::optional<Error> error) const {
  // Runs once: the result moves on to the callback.
  onMainThread([callbackName, cb = std::move(cb), result = std::move(result),
                error = std::move(error)]() mutable {
    if (!cb) {
      warnAbsentCallback(callbackName);
      return;
    }
    cb(std::move(result), std::move(error));
  });
}

template <class Result>
bool ProviderContext::shouldStopAfterHandlingParameters(const VariableBindings& bindings,
                                                        std::string_view operation,
                                                        const ProviderCallback<Result>& cb,
                                                        const char* callbackName) const {
  auto error = validationFailure(bindings, operation);
  if (!error) return false;
  answerOnMainThread<Result>(callbackName, cb, std::nullopt, std::move(error));
  return true;
}

template <class Result>
void ProviderContext::send(ProviderRequest<Result> request, ProviderCallback<Result> cb) const {
  using ParseFailure = typename ProviderRequest<Result>::ParseFailure;
  if (request.starting != nullptr) postToNotificationCenterOnMainThread(request.starting);
  auto urlRequest = urlRequestFor(request);
  urlRequest.httpBody = std::move(request.body);
  for (auto& [field, value] : request.headers) urlRequest.setValue(std::move(value), field);
  if (request.entityTag) addEntityTag(urlRequest);

  auto failed = [ctx = *this, cb, failures = std::move(request.failures),
                 callbackName = request.callbackName, first = request.notifiesBeforeAnswer,
                 quiet = request.quietWithoutCallback,
                 keeps = std::move(request.keepsFailure)](Error error) {
    if (keeps) {
      if (auto kept = keeps(error)) {
        ctx.answerOnMainThread<Result>(callbackName, cb, std::nullopt, std::move(*kept));
        return;
      }
    }
    if (quiet && !cb) return;
    if (!first) ctx.answerOnMainThread<Result>(callbackName, cb, std::nullopt, error);
    for (const char* name : failures) ctx.postToNotificationCenterOnMainThread(name, error);
    if (first) ctx.answerOnMainThread<Result>(callbackName, cb, std::nullopt, error);
  };
  auto transfer = std::move(request.transfer);
  auto succeeded = [ctx = *this, cb, failed,
                    request = std::move(request)](QVKDispatcherResponse response) mutable {
    if (request.entityTag && unmodified(response)) {
      if (request.unmodifiedPostsSuccess && request.success != nullptr) {
        ctx.postToNotificationCenterOnMainThread(request.success);
      }
      return;
    }
    if (request.answers && !request.answers(response)) return;
    auto result = request.parse(std::move(response));
    if (!result.ok()) {
      if (request.parseFailure == ParseFailure::failsRequest) {
        failed(result.error());
        return;
      }
      ctx.answerOnMainThread<Result>(request.callbackName, cb, std::nullopt, result.error());
      if (request.parseFailure == ParseFailure::postsSuccess && request.success != nullptr) {
        ctx.postToNotificationCenterOnMainThread(request.success);
      }
      return;
    }
    quorvel::platform::UserInfo info;
    if (request.successInfo) info = request.successInfo(result.value());
    if (request.notifiesBeforeAnswer || (request.quietWithoutCallback && !cb)) {
      ctx.answerInOrder(request, cb, std::move(result).value(), std::move(info));
      return;
    }
    if (request.answered) {
      ctx.answerOnMainThread<Result>(request.callbackName, cb, result.value(), std::nullopt);
      request.answered(result.value());
    } else {
      ctx.answerOnMainThread<Result>(request.callbackName, cb, std::move(result).value(),
                                     std::nullopt);
    }
    if (request.success != nullptr) {
      ctx.postToNotificationCenterOnMainThread(request.success, std::nullopt, std::move(info));
    }
  };
  executeRequestNoBlock(std::move(urlRequest), std::move(succeeded), std::move(failed),
                        std::move(transfer));
}

}  // namespace velmaro
