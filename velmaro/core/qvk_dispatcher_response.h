#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "quorvel/http_url_response.h"

namespace velmaro {

// What a successful dispatch hands to the provider: the HTTP response (status
// and header fields) and the body bytes, either of which may be absent.
class QVKDispatcherResponse {
 public:
  QVKDispatcherResponse() = default;
  QVKDispatcherResponse(std::optional<quorvel::HTTPURLResponse> response,
                        std::optional<std::string> data)
      : response(std::move(response)), data(std::move(data)) {}
  static QVKDispatcherResponse initWithResponse(std::optional<quorvel::HTTPURLResponse> response,
                                                std::optional<std::string> data) {
    return QVKDispatcherResponse(std::move(response), std::move(data));
  }

  // For the parser of a body it cannot read: the answer is logged and taken
  // out of the HTTP cache, so that the next call asks the service again. On
  // the main queue, where answers are parsed.
  void bodyUnreadable(std::string_view reason) const {
    if (onUnreadable) onUnreadable(reason);
  }

  std::optional<quorvel::HTTPURLResponse> response;
  std::optional<std::string> data;
  // Set by the dispatcher; nothing for a response made elsewhere.
  std::function<void(std::string_view reason)> onUnreadable;
};

}  // namespace velmaro
