#include "velmaro/outbox/outbox_sender.h"

#include <algorithm>
#include <filesystem>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "velmaro/attachments/qvk_upload_provider.h"
#include "velmaro/outbox/outbox_errors.h"
#include "velmaro/outbox/outbox_read_back.h"
#include "velmaro/outbox/outbox_store.h"
#include "velmaro/requests/request_comment_operations.h"
#include "velmaro/requests/request_create_operations.h"
#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {

namespace {

// While the outbox sends, a failure that leaves the call kept announces
// nothing: the call has not failed, it waits.
template <class Result>
void keepUnlessRefused(ProviderRequest<Result>& request) {
  request.keepsFailure = [](const quorvel::platform::Error& error) {
    return OutboxErrors::classify(error) == OutboxErrors::Failure::final
               ? std::nullopt
               : std::optional<quorvel::platform::Error>(error);
  };
}

std::optional<std::vector<QVKUploadResponse>> uploads(const OutboxEntry& entry) {
  if (entry.tokens.empty()) return std::nullopt;
  std::vector<QVKUploadResponse> uploads;
  for (const auto& token : entry.tokens) {
    QVKUploadResponse upload;
    upload.uploadToken = token;
    uploads.push_back(std::move(upload));
  }
  return uploads;
}

// A new request's body with the upload token `to` in place of `from`.
std::string replacedToken(const std::string& body, const std::string& from, const std::string& to) {
  boost::system::error_code ec;
  auto json = boost::json::parse(body, ec);
  if (ec || !json.is_object()) return body;
  auto* request = json.get_object().if_contains("request");
  auto* comment =
      request && request->is_object() ? request->get_object().if_contains("comment") : nullptr;
  auto* uploads =
      comment && comment->is_object() ? comment->get_object().if_contains("uploads") : nullptr;
  if (uploads == nullptr || !uploads->is_array()) return body;
  auto& tokens = uploads->get_array();
  for (auto it = tokens.begin(); it != tokens.end(); ++it) {
    if (it->is_string() && it->get_string() == from) {
      if (to.empty()) {
        tokens.erase(it);
      } else {
        *it = to;
      }
      break;
    }
  }
  return boost::json::serialize(json);
}

}  // namespace

void OutboxSender::start(std::shared_ptr<OutboxStore> store, QVKRequestProviderContext ctx,
                         Done done) {
  auto sender = std::make_shared<OutboxSender>(std::move(store), ctx, std::move(done));
  ctx.onMainThread([sender] {
    if (!sender->store_->acquireSender()) {
      sender->report_.waiting = sender->store_->count();
      sender->done_(sender->report_);
      return;
    }
    sender->next();
  });
}

void OutboxSender::next() {
  // Renewed before each call, so the lease outlives the whole run.
  if (!store_->acquireSender()) return stop(std::nullopt);
  const auto entry = store_->first();
  if (!entry) return stop(std::nullopt);
  if (entry->state == OutboxEntry::State::waiting) return send(*entry);
  readBack(*entry);
}

void OutboxSender::readBack(const OutboxEntry& entry) {
  OutboxReadBack::find(ctx_, entry,
                       [self = shared_from_this(), entry](
                           std::optional<OutboxReadBack::Found> found, std::optional<Error> error) {
                         if (error) {
                           self->store_->setState(entry.id, OutboxEntry::State::unsure,
                                                  error->localizedDescription());
                           return self->stop(std::move(error));
                         }
                         if (!found) return self->send(entry);
                         self->store_->remove(entry.id);
                         ++self->report_.foundSent;
                         if (found->request)
                           RequestCreateOperations::arrived(self->ctx_, *found->request);
                         if (found->comment) {
                           RequestCommentOperations::arrived(self->ctx_, entry.requestId,
                                                             *found->comment);
                         }
                         self->next();
                       });
}

void OutboxSender::send(const OutboxEntry& entry) {
  if (uploadKeptFile(entry)) return;
  // Durable before anything leaves: a sender killed from here on leaves the
  // call as "sending", which the next run reads back before sending again.
  if (!store_->markSending(entry.id)) {
    return stop(Error::withDescription(OutboxErrors::kDomain, OutboxErrors::kCannotKeep,
                                       "The outbox cannot be written"));
  }
  auto self = shared_from_this();
  if (entry.kind == OutboxEntry::Kind::request) {
    auto request = RequestCreateOperations::submission(ctx_, entry.body);
    keepUnlessRefused(request);
    ctx_.send(std::move(request), ProviderCallback<QVKDispatcherResponse>(
                                      [self, entry](auto, std::optional<Error> error) {
                                        self->answered(entry, std::move(error));
                                      }));
    return;
  }
  auto request = RequestCommentOperations::submission(entry.requestId, entry.text, uploads(entry));
  keepUnlessRefused(request);
  // Every answer is taken: one the provider would leave unanswered still
  // ends this call.
  request.answers = nullptr;
  ctx_.sendWhenConversationsEnabled(
      std::move(request),
      ProviderCallback<QVKComment>([self, entry](auto, std::optional<Error> error) {
        self->answered(entry, std::move(error));
      }));
}

bool OutboxSender::uploadKeptFile(const OutboxEntry& entry) {
  const auto kept = std::find_if(entry.tokens.begin(), entry.tokens.end(), [](const auto& token) {
    return RequestOutbox::isKeptFile(token);
  });
  if (kept == entry.tokens.end()) return false;
  const auto file = store_->file(*kept);
  if (!file) {
    // Its copy is gone (the folder was cleaned): the call goes without it.
    uploaded(entry, *kept, std::nullopt, std::nullopt);
    return true;
  }
  QVKUploadProvider(ctx_.core())
      .uploadFile(file->path.string(), file->name, file->contentType, nullptr,
                  [self = shared_from_this(), entry, keptToken = *kept](
                      std::optional<QVKUploadResponse> upload, std::optional<Error> error) {
                    self->uploaded(entry, keptToken, upload ? upload->uploadToken : std::nullopt,
                                   std::move(error));
                  });
  return true;
}

// A file the service refuses leaves the call, which goes without it: the
// user's words matter more than one attachment.
void OutboxSender::uploaded(OutboxEntry entry, const std::string& keptToken,
                            std::optional<std::string> token, std::optional<Error> error) {
  if (error && OutboxErrors::classify(*error) != OutboxErrors::Failure::final) {
    store_->setState(entry.id, OutboxEntry::State::waiting, error->localizedDescription());
    return stop(std::move(error));
  }
  if (error || !token) {
    QVKClassicLogger::warn("The outbox's call " + std::to_string(entry.id) +
                           " goes without a file the service did not take" +
                           (error ? ": " + error->localizedDescription() : std::string()));
  }
  const auto replacement = error ? std::string() : token.value_or("");
  auto& tokens = entry.tokens;
  const auto at = std::find(tokens.begin(), tokens.end(), keptToken);
  if (replacement.empty()) {
    tokens.erase(at);
  } else {
    *at = replacement;
  }
  if (entry.kind == OutboxEntry::Kind::request) {
    entry.body = replacedToken(entry.body, keptToken, replacement);
  }
  store_->setTokens(entry.id, entry.tokens, entry.body);
  if (const auto file = store_->file(keptToken)) {
    std::error_code ec;
    std::filesystem::remove(file->path, ec);
  }
  store_->removeFile(keptToken);
  send(entry);
}

void OutboxSender::answered(const OutboxEntry& entry, std::optional<Error> error) {
  if (!error) {
    store_->remove(entry.id);
    ++report_.sent;
    return next();
  }
  switch (OutboxErrors::classify(*error)) {
    case OutboxErrors::Failure::notReached:
    case OutboxErrors::Failure::tryLater:
      store_->setState(entry.id, OutboxEntry::State::waiting, error->localizedDescription());
      return stop(std::move(error));
    case OutboxErrors::Failure::mayHaveReached:
      store_->setState(entry.id, OutboxEntry::State::unsure, error->localizedDescription());
      return stop(std::move(error));
    case OutboxErrors::Failure::final:
      // Refused, or answered in a form that cannot be read (the service
      // took it then): either way it is done; a refusal's failure
      // notifications have been posted.
      QVKClassicLogger::warn("The outbox's call " + std::to_string(entry.id) +
                             " ended with: " + error->localizedDescription());
      store_->remove(entry.id);
      ++report_.refused;
      return next();
  }
}

void OutboxSender::stop(std::optional<Error> stoppedBy) {
  store_->releaseSender();
  report_.waiting = store_->count();
  if (report_.waiting > 0) report_.stoppedBy = std::move(stoppedBy);
  done_(report_);
}

}  // namespace velmaro
