#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json/object.hpp>

#include "quorvel/platform/error.h"
#include "quorvel/platform/url.h"
#include "quorvel/platform/url_request.h"
#include "quorvel/quorvel.h"
#include "velmaro/core/qvk_api_dispatcher.h"
#include "velmaro/util/qvk_validator.h"

namespace velmaro {

// What an operation of the Help Center provider needs after its call has
// returned: the core object and the provider's identity as the sender of its
// notifications. Operations copy it into their completions instead of
// capturing the provider, so a provider may go away with calls in flight.
class QVKHelpCenterProviderContext {
 public:
  using Error = quorvel::platform::Error;
  using LocaleContinuation = std::function<void(std::optional<std::string>)>;
  using VotingContinuation = std::function<void(std::optional<Error>)>;

  QVKHelpCenterProviderContext(std::shared_ptr<quorvel::Quorvel> core, const void* sender)
      : core_(std::move(core)), sender_(sender) {}

  const std::shared_ptr<quorvel::Quorvel>& core() const { return core_; }
  const void* sender() const { return sender_; }

  // Fetched anew at each use: the shared dispatcher follows the last core
  // object handed to it.
  std::shared_ptr<QVKAPIDispatcher> dispatcher() const;
  // The base URL string with `path` appended as it is (no separator added);
  // nothing when the joined text is not a valid URL.
  std::optional<quorvel::platform::Url> helpCenterURLFromString(std::string_view path) const;
  quorvel::platform::URLRequest baseRequestWithURL(std::string_view path,
                                                   std::string httpMethod) const;
  quorvel::platform::URLRequest baseRequest(std::string_view path) const {
    return baseRequestWithURL(path, "GET");
  }
  void executeRequestNoBlock(quorvel::platform::URLRequest request,
                             QVKAPIDispatcher::OnSuccess onSuccess,
                             QVKAPIDispatcher::OnError onError) const;

  // The locale override, else the Help Center settings' locale, else the
  // first preferred language of the platform.
  void localeForRequest(LocaleContinuation continuation) const;
  // Deliberately answers twice when voting is off or no settings came back:
  // first with the voting error, then with no error (the vote still goes out).
  static void articleVotingAvailable(VotingContinuation continuation);
  static Error votingDisabledError();

  // True when the arguments fail validation: the failure is logged and handed
  // to `answerError`, and the operation must stop.
  bool shouldStopAfterHandlingParameters(const VariableBindings& bindings,
                                         std::string_view operation,
                                         const std::function<void(Error)>& answerError) const;

  // Asynchronously on the main queue of the core object.
  void onMainThread(std::function<void()> task) const;
  void postToNotificationCenterOnMainThread(std::string name,
                                            std::optional<Error> error = std::nullopt) const;

  // Records the query of a search whose answer just arrived, with its "count".
  static void cacheLastSearch(const std::optional<std::string>& query,
                              const boost::json::object& result);

  // The answer body as a JSON object; empty when it is absent, unparsable or
  // not an object (the parsers then give empty results).
  // `storage` holds the values; the default is the heap.
  static boost::json::object jsonObject(const std::optional<std::string>& data,
                                        boost::json::storage_ptr storage = {});
  // The object under `key`, or an empty one.
  static boost::json::object objectAt(const boost::json::object& json, std::string_view key);

 private:
  std::shared_ptr<quorvel::Quorvel> core_;
  const void* sender_;
};

}  // namespace velmaro
