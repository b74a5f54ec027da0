#pragma once

#include <optional>
#include <string>

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

  std::optional<quorvel::HTTPURLResponse> response;
  std::optional<std::string> data;
};

}  // namespace velmaro
