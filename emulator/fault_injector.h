#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include <boost/json/object.hpp>

namespace qvk::emulator {

// One scripted misbehaviour, applied to the next `remaining` requests whose
// path starts with `pathPrefix` (every service path when empty).
struct Fault {
  std::int64_t id = 0;
  int remaining = 1;
  std::string pathPrefix;
  int status = 0;     // 0: answer normally (after the delay)
  int delayMs = 0;    // waited before anything else
  bool drop = false;  // close the connection without a complete answer
  // Handle the request as usual (a POST stores what it sends), then close
  // the connection without its answer.
  bool dropAfter = false;
  bool malformed = false;  // a 200 whose JSON body is cut off
  bool oversize = false;   // a 200 whose body is longer than kOversizeBytes
};

// A little past the core's default answer limit (32 MiB), so an oversize
// answer fails in any client that keeps that limit or a smaller one.
inline constexpr std::size_t kOversizeBytes = 33u * 1024u * 1024u;

// The faults the scenario controls queued. The first queued fault that
// matches a request applies to it; a used-up fault is removed.
class FaultInjector {
 public:
  // Parses {"count", "status", "delay_ms", "drop", "drop_after", "malformed", "oversize",
  // "path_prefix"};
  // answers an error text, or "" and the stored fault in `added`.
  std::string add(const boost::json::object& faultJson, Fault& added);
  std::optional<Fault> take(const std::string& path);
  void reset();
  boost::json::array list() const;

 private:
  mutable std::mutex mutex_;
  std::deque<Fault> faults_;
  std::int64_t nextId_ = 1;
};

boost::json::object toJson(const Fault& fault);

}  // namespace qvk::emulator
