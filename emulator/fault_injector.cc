#include "emulator/fault_injector.h"

#include <boost/json.hpp>

namespace qvk::emulator {

namespace json = boost::json;

json::object toJson(const Fault& fault) {
  return json::object{{"id", fault.id},
                      {"remaining", fault.remaining},
                      {"path_prefix", fault.pathPrefix},
                      {"status", fault.status},
                      {"delay_ms", fault.delayMs},
                      {"drop", fault.drop},
                      {"drop_after", fault.dropAfter},
                      {"malformed", fault.malformed},
                      {"oversize", fault.oversize}};
}

namespace {

std::string readInt(const json::object& faultJson, const char* key, int min, int max, int& out) {
  const auto* v = faultJson.if_contains(key);
  if (!v) return {};
  if (!v->is_int64() || v->as_int64() < min || v->as_int64() > max)
    return std::string(key) + " must be an integer from " + std::to_string(min) + " to " +
           std::to_string(max);
  out = static_cast<int>(v->as_int64());
  return {};
}

std::string readBool(const json::object& faultJson, const char* key, bool& out) {
  const auto* v = faultJson.if_contains(key);
  if (!v) return {};
  if (!v->is_bool()) return std::string(key) + " must be a boolean";
  out = v->as_bool();
  return {};
}

}  // namespace

std::string FaultInjector::add(const json::object& faultJson, Fault& added) {
  Fault f;
  std::string error;
  if (error.empty()) error = readInt(faultJson, "count", 1, 1000000, f.remaining);
  if (error.empty()) error = readInt(faultJson, "status", 100, 599, f.status);
  if (error.empty()) error = readInt(faultJson, "delay_ms", 0, 60000, f.delayMs);
  if (error.empty()) error = readBool(faultJson, "drop", f.drop);
  if (error.empty()) error = readBool(faultJson, "drop_after", f.dropAfter);
  if (error.empty()) error = readBool(faultJson, "malformed", f.malformed);
  if (error.empty()) error = readBool(faultJson, "oversize", f.oversize);
  if (!error.empty()) return error;
  if (const auto* p = faultJson.if_contains("path_prefix")) {
    if (!p->is_string()) return "path_prefix must be a string";
    f.pathPrefix = std::string(p->as_string());
  }
  if (f.status == 0 && f.delayMs == 0 && !f.drop && !f.dropAfter && !f.malformed && !f.oversize)
    return "a fault needs status, delay_ms, drop, drop_after, malformed or oversize";
  std::lock_guard guard(mutex_);
  f.id = nextId_++;
  faults_.push_back(f);
  added = f;
  return {};
}

std::optional<Fault> FaultInjector::take(const std::string& path) {
  std::lock_guard guard(mutex_);
  for (auto it = faults_.begin(); it != faults_.end(); ++it) {
    if (path.compare(0, it->pathPrefix.size(), it->pathPrefix) != 0) continue;
    Fault f = *it;
    if (--it->remaining <= 0) faults_.erase(it);
    return f;
  }
  return std::nullopt;
}

void FaultInjector::reset() {
  std::lock_guard guard(mutex_);
  faults_.clear();
}

json::array FaultInjector::list() const {
  std::lock_guard guard(mutex_);
  json::array out;
  for (const auto& f : faults_) out.push_back(toJson(f));
  return out;
}

}  // namespace qvk::emulator
