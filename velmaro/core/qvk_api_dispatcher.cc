#include "velmaro/core/qvk_api_dispatcher.h"

#include "velmaro/core/dispatcher_adapter.h"

namespace velmaro {
namespace {

std::mutex& sharedMutex() {
  static std::mutex m;
  return m;
}

std::shared_ptr<QVKAPIDispatcher>& shared() {
  static std::shared_ptr<QVKAPIDispatcher> dispatcher;
  return dispatcher;
}

}  // namespace

std::shared_ptr<QVKAPIDispatcher> QVKAPIDispatcher::instanceWithQuorvel(
    std::shared_ptr<quorvel::Quorvel> quorvel) {
  std::shared_ptr<QVKAPIDispatcher> dispatcher;
  {
    std::lock_guard lock(sharedMutex());
    if (!shared()) shared() = std::make_shared<QVKAPIDispatcher>();
    dispatcher = shared();
  }
  dispatcher->setQuorvel(std::move(quorvel));
  return dispatcher;
}

std::shared_ptr<QVKAPIDispatcher> QVKAPIDispatcher::instance() {
  std::lock_guard lock(sharedMutex());
  return shared();
}

void QVKAPIDispatcher::resetSession() {
  DispatcherAdapter::clearSettingsAndSession();
}

void QVKAPIDispatcher::resetForTesting() {
  std::lock_guard lock(sharedMutex());
  shared().reset();
}

std::shared_ptr<quorvel::Quorvel> QVKAPIDispatcher::quorvel() const {
  std::lock_guard lock(mutex_);
  return quorvel_;
}

void QVKAPIDispatcher::setQuorvel(std::shared_ptr<quorvel::Quorvel> quorvel) {
  std::lock_guard lock(mutex_);
  quorvel_ = std::move(quorvel);
}

void QVKAPIDispatcher::executeRequest(const RequestBuilder& build, OnSuccess onSuccess,
                                      OnError onError) {
  executeRequestNoBlock(build ? build() : quorvel::platform::URLRequest(), std::move(onSuccess),
                        std::move(onError));
}

void QVKAPIDispatcher::executeRequestNoBlock(
    quorvel::platform::URLRequest request, OnSuccess onSuccess, OnError onError,
    std::shared_ptr<const quorvel::TransferOptions> transfer) {
  auto core = quorvel();
  // Weak: the completion must not keep the core object alive.
  auto unreadable = [weakCore = std::weak_ptr(core), request](std::string_view reason) {
    DispatcherAdapter::discardUnreadableAnswer(weakCore.lock(), request, reason);
  };
  DispatcherAdapter::performRequest(
      core, request,
      [url = request.url, onSuccess = std::move(onSuccess), onError = std::move(onError),
       unreadable = std::move(unreadable)](std::optional<quorvel::HTTPURLResponse> response,
                                           std::optional<std::string> data,
                                           std::optional<quorvel::platform::Error> transportError) {
        if (auto error = DispatcherAdapter::convertError(response, transportError)) {
          DispatcherAdapter::logError(url, response, transportError);
          if (onError) onError(std::move(*error));
          return;
        }
        if (!onSuccess) return;
        QVKDispatcherResponse answer(std::move(response), std::move(data));
        answer.onUnreadable = unreadable;
        onSuccess(std::move(answer));
      },
      std::move(transfer));
}

}  // namespace velmaro
