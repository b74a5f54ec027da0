#include "velmaro/core/provider_context.h"

#include "quorvel/platform/main_queue.h"
#include "quorvel/platform/notification_center.h"
#include "velmaro/core/qvk_etag.h"
#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {

std::shared_ptr<QVKAPIDispatcher> ProviderContext::dispatcher() const {
  return QVKAPIDispatcher::instanceWithQuorvel(core_);
}

std::optional<quorvel::platform::Url> ProviderContext::urlFromString(std::string_view path) const {
  std::string text = core_ ? core_->quorvelUrl() : std::string();
  text.append(path);
  return quorvel::platform::Url::make(text);
}

quorvel::platform::URLRequest ProviderContext::baseRequestWithURL(std::string_view path,
                                                                  std::string httpMethod) const {
  return quorvel::platform::URLRequest(urlFromString(path), std::move(httpMethod));
}

void ProviderContext::executeRequestNoBlock(
    quorvel::platform::URLRequest request, QVKAPIDispatcher::OnSuccess onSuccess,
    QVKAPIDispatcher::OnError onError,
    std::shared_ptr<const quorvel::TransferOptions> transfer) const {
  dispatcher()->executeRequestNoBlock(std::move(request), std::move(onSuccess), std::move(onError),
                                      std::move(transfer));
}

std::optional<quorvel::platform::Error> ProviderContext::validationFailure(
    const VariableBindings& bindings, std::string_view operation) const {
  auto error = QVKValidator::validateValues(bindings);
  if (!error) return std::nullopt;
  QVKClassicLogger::e(
      "%s failed parameter validation with parameters: \n%@\nCancelling call with error: %@",
      operation, QVKValidator::describe(bindings), *error);
  return error;
}

void ProviderContext::warnAbsentCallback(const char* callbackName) {
  QVKClassicLogger::w("Ignoring attempt to respond on a nil %@", callbackName);
}

void ProviderContext::onMainThread(std::function<void()> task) const {
  if (core_ && core_->mainQueue()) {
    core_->mainQueue()->post(std::move(task));
    return;
  }
  // Without a core object there is no main queue; nothing could have been
  // sent either, so the answer is given where we are.
  QVKClassicLogger::warn("A provider has no core object: answering on this thread");
  task();
}

void ProviderContext::addEntityTag(quorvel::platform::URLRequest& request) {
  QVKETag::addEtagToRequest(request);
}

bool ProviderContext::unmodified(const QVKDispatcherResponse& response) {
  return QVKETag::unmodified(response);
}

void ProviderContext::postToNotificationCenterOnMainThread(std::string name,
                                                           std::optional<Error> error,
                                                           quorvel::platform::UserInfo info) const {
  onMainThread([name = std::move(name), error = std::move(error), info = std::move(info),
                sender = sender_]() mutable {
    if (error) info.emplace("error", *error);
    quorvel::platform::NotificationCenter::defaultCenter().post(name, sender, std::move(info));
  });
}

}  // namespace velmaro
