#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/core/answer_parsing.h"
#include "velmaro/core/provider_context.h"
#include "velmaro/helpcenter/help_center_notifications.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_validator.h"

namespace velmaro {

// The provider core with what only the Help Center needs: the locale of a
// request, the article-voting gate and the last search.
class QVKHelpCenterProviderContext : public ProviderContext {
 public:
  using LocaleContinuation = std::function<void(std::optional<std::string>)>;
  using VotingContinuation = std::function<void(std::optional<Error>)>;
  // Article labels; absent fails validation.
  using Labels = std::optional<std::vector<std::string>>;

  // The names of the three callback kinds, as the absent-callback warning
  // gives them.
  static constexpr const char* kListCallback = "QVKHelpCenterCallback";
  static constexpr const char* kCategoriesCallback = "QVKHelpCenterCategoriesCallback";
  static constexpr const char* kGenericCallback = "QVKHelpCenterGenericCallback";

  using ProviderContext::ProviderContext;

  // The locale override, else the Help Center settings' locale, else the
  // first preferred language of the platform.
  void localeForRequest(LocaleContinuation continuation) const;
  // Deliberately answers twice when voting is off or no settings came back:
  // first with the voting error, then with no error (the vote still goes out).
  static void articleVotingAvailable(VotingContinuation continuation);
  static Error votingDisabledError();

  // Every Help Center operation answers a failed validation through the list
  // callback's helper, whatever its own callback kind.
  template <class Result>
  bool stopsOnInvalid(const VariableBindings& bindings, std::string_view operation,
                      const ProviderCallback<Result>& cb) const {
    return shouldStopAfterHandlingParameters(bindings, operation, cb, kListCallback);
  }

  // A list request of the common flow: its own start and success
  // notifications, "QV_HC_RequestError" on failure, the answer's JSON handed
  // to `parse`.
  template <class Record, class Parse>
  static ProviderRequest<std::vector<Record>> listRequest(std::string path, const char* starting,
                                                          const char* success, Parse parse) {
    return listRequestParsedBy<Record>(std::move(path), starting, success,
                                       AnswerParsing::json<std::vector<Record>>(std::move(parse)));
  }

  // As listRequest(), for an answer that is a plain list under `key`: read
  // element by element (AnswerParsing::list), for lists that can be long.
  template <class Record>
  static ProviderRequest<std::vector<Record>> plainListRequest(
      std::string path, const char* starting, const char* success, const char* key,
      Record (*parseOne)(const boost::json::object&)) {
    return listRequestParsedBy<Record>(std::move(path), starting, success,
                                       AnswerParsing::list<Record>(key, parseOne));
  }

  // The record under `key` of the answer, as a one-element list.
  template <class Record>
  static auto single(const char* key, Record (*parseOne)(const boost::json::object&)) {
    return [key, parseOne](const boost::json::object& json) {
      return std::vector<Record>{parseOne(JsonValueConversion::objectAt(json, key))};
    };
  }

  // Records the query of a search whose answer just arrived, with its "count".
  static void cacheLastSearch(const std::optional<std::string>& query,
                              const boost::json::object& result);

 private:
  template <class Record>
  static ProviderRequest<std::vector<Record>> listRequestParsedBy(
      std::string path, const char* starting, const char* success,
      typename ProviderRequest<std::vector<Record>>::Parse parse) {
    ProviderRequest<std::vector<Record>> request;
    request.path = std::move(path);
    request.starting = starting;
    request.success = success;
    request.failures = {QV_HC_RequestError};
    request.parse = std::move(parse);
    request.callbackName = kListCallback;
    return request;
  }
};

}  // namespace velmaro
