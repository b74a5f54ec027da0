#include "velmaro/outbox/outbox_entry.h"

#include "velmaro/util/qvk_date_util.h"

namespace velmaro {

OutboxEntry OutboxEntry::newRequest(std::string subject, std::string description,
                                    std::string body, std::vector<std::string> tokens) {
  OutboxEntry entry;
  entry.kind = Kind::request;
  entry.subject = std::move(subject);
  entry.text = std::move(description);
  entry.body = std::move(body);
  entry.tokens = std::move(tokens);
  entry.queuedAt = std::chrono::system_clock::now();
  return entry;
}

OutboxEntry OutboxEntry::reply(std::string requestId, std::string text,
                               std::vector<std::string> tokens) {
  OutboxEntry entry;
  entry.kind = Kind::comment;
  entry.requestId = std::move(requestId);
  entry.text = std::move(text);
  entry.tokens = std::move(tokens);
  entry.queuedAt = std::chrono::system_clock::now();
  return entry;
}

std::string_view OutboxEntry::name(Kind kind) {
  return kind == Kind::request ? "request" : "comment";
}

std::string_view OutboxEntry::name(State state) {
  switch (state) {
    case State::waiting:
      return "waiting";
    case State::unsure:
      return "unsure";
    case State::sending:
      return "sending";
  }
  return "unsure";
}

std::optional<OutboxEntry::Kind> OutboxEntry::kindNamed(std::string_view name) {
  if (name == "request") return Kind::request;
  if (name == "comment") return Kind::comment;
  return std::nullopt;
}

// A state this build does not know came from a newer one: the careful
// reading is that the service may have the call.
OutboxEntry::State OutboxEntry::stateNamed(std::string_view name) {
  if (name == "waiting") return State::waiting;
  if (name == "sending") return State::sending;
  return State::unsure;
}

boost::json::object OutboxEntry::toJson() const {
  boost::json::object json{{"id", id}, {"kind", name(kind)}};
  if (kind == Kind::comment) json["request_id"] = requestId;
  if (kind == Kind::request) json["subject"] = subject;
  json["text"] = text;
  json["queued_at"] = QVKDateUtil::stringFromDate(queuedAt);
  json["state"] = name(state);
  json["attempts"] = attempts;
  if (!lastError.empty()) json["last_error"] = lastError;
  return json;
}

}  // namespace velmaro
