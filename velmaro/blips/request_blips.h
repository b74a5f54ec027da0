#pragma once

#include <string>

namespace velmaro {

// The request side's usage events: request created, request updated.
class RequestBlips {
 public:
  RequestBlips() = delete;

  static void requestCreatedBlip(const std::string& requestId);
  static void requestUpdateBlip(const std::string& requestId);
};

using QVKRequestBlips = RequestBlips;

}  // namespace velmaro
