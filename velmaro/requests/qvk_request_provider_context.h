#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "velmaro/core/provider_context.h"
#include "velmaro/outbox/outbox_entry.h"
#include "velmaro/outbox/request_outbox.h"
#include "velmaro/requests/qvk_request_provider_errors.h"

namespace velmaro {

// What the request provider's operations share beyond the provider core: the
// two feature gates and the gated send. Copied into completions like its
// base; holds no provider.
class QVKRequestProviderContext : public ProviderContext {
 public:
  using ProviderContext::ProviderContext;
  using Gate = std::function<void(bool open)>;

  // The outbox that keeps new requests and replies the service did not get;
  // null (the default): their failures are answered as failures.
  const std::shared_ptr<RequestOutbox>& outbox() const { return outbox_; }
  void setOutbox(std::shared_ptr<RequestOutbox> outbox) { outbox_ = std::move(outbox); }

  // The conversations switch and the ticket-forms switch of the account's
  // settings; `gate` runs where the settings provider answers (the main
  // queue). Missing settings count as closed.
  static void conversationsEnabled(Gate gate);
  static void ticketFormsAvailable(Gate gate);

  // Asks the conversations gate; in its answer, whatever it is, posts the
  // request's starting notification first. Open sends the request; closed
  // answers `cb` with the account restriction error and posts the request's
  // failure notifications.
  template <class Result>
  void sendWhenConversationsEnabled(ProviderRequest<Result> request,
                                    ProviderCallback<Result> cb) const {
    conversationsEnabled(
        [ctx = *this, request = std::move(request), cb = std::move(cb)](bool open) mutable {
          if (request.starting != nullptr) {
            ctx.postToNotificationCenterOnMainThread(request.starting);
            request.starting = nullptr;
          }
          if (open) {
            ctx.send(std::move(request), std::move(cb));
            return;
          }
          ctx.refuse(request, std::move(cb), QVKRequestProviderErrors::accountRestrictionError());
        });
  }

  // With an outbox, a new request or reply either joins it at once (calls
  // wait before it: the starting notification, then `cb` answered with the
  // queued outcome; true, nothing is to be sent) or is sent with the outbox
  // taking over a failure before the service (false). Without one, false.
  template <class Result>
  bool keptInOutbox(ProviderRequest<Result>& request, const ProviderCallback<Result>& cb,
                    OutboxEntry entry) const {
    if (!outbox_) return false;
    if (auto kept = outbox_->keepBehindWaiting(entry)) {
      postToNotificationCenterOnMainThread(request.starting);
      answerOnMainThread<Result>(request.callbackName, cb, std::nullopt, std::move(*kept));
      return true;
    }
    request.keepsFailure = outbox_->keeper(std::move(entry));
    return false;
  }

  // The same refusal path as a failed request: the callback, then the
  // request's failure notifications.
  template <class Result>
  void refuse(const ProviderRequest<Result>& request, ProviderCallback<Result> cb,
              Error error) const {
    answerOnMainThread<Result>(request.callbackName, std::move(cb), std::nullopt, error);
    for (const char* name : request.failures) postToNotificationCenterOnMainThread(name, error);
  }

  QVKRequestProviderContext withoutSender() const {
    QVKRequestProviderContext context(core(), nullptr);
    context.setOutbox(outbox_);
    return context;
  }

 private:
  std::shared_ptr<RequestOutbox> outbox_;
};

}  // namespace velmaro
