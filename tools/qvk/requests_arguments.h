#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qvk {

// What the `requests` commands were given; the command line writes straight
// into it. Options that did not appear stay absent, so that the create
// request built from them leaves the matching properties unset.
struct RequestsArguments {
  std::optional<std::string> requestId;
  std::optional<std::string> status;
  std::optional<std::string> since;
  bool agentOnly = false;
  std::optional<std::string> subject;
  std::optional<std::string> description;
  std::optional<std::vector<std::string>> tags;
  std::optional<std::vector<std::string>> fields;
  std::optional<std::int64_t> formId;
  std::optional<std::vector<std::string>> attachFiles;
  std::optional<std::vector<std::string>> tokens;
  std::optional<std::string> text;
  std::int64_t commentCount = 0;
  bool queueOffline = false;  // create, comment: keep the call when the service is unreachable
  bool sendOutbox = false;    // outbox: send what waits first
};

}  // namespace qvk
