#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>

namespace velmaro {

// One call the outbox holds: a new request or a reply, kept with what it
// takes to send it again and to recognise it in the service's answers.
struct OutboxEntry {
  enum class Kind { request, comment };
  // waiting: the service never got it. unsure: it may have (the answer was
  // lost, or a sender died while it was on its way): it is sent again only
  // after a read shows the service lacks it. sending: on its way now; a
  // sender that finds it so at start treats it as unsure.
  enum class State { waiting, unsure, sending };

  std::int64_t id = 0;
  Kind kind = Kind::comment;
  std::string requestId;  // the request a reply goes to
  std::string subject;    // a new request's subject
  std::string text;       // a new request's description, or the reply's body
  std::string body;       // a new request's whole body, as it was built
  std::vector<std::string>
      tokens;  // upload tokens the call carries (a new request's are in its body too)
  std::chrono::system_clock::time_point queuedAt;
  State state = State::waiting;
  std::int64_t attempts = 0;
  std::string lastError;

  static OutboxEntry newRequest(std::string subject, std::string description, std::string body,
                                std::vector<std::string> tokens);
  static OutboxEntry reply(std::string requestId, std::string text,
                           std::vector<std::string> tokens);

  static std::string_view name(Kind kind);
  static std::string_view name(State state);
  static std::optional<Kind> kindNamed(std::string_view name);
  static State stateNamed(std::string_view name);  // unknown names read as unsure

  // {"id", "kind", "request_id"?, "subject"?, "text", "queued_at", "state",
  // "attempts", "last_error"?}: what `qvk requests outbox --json` shows.
  boost::json::object toJson() const;
};

}  // namespace velmaro
