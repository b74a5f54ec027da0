#include "quorvel/connection_ledger.h"

#include "quorvel/platform/url_encoding.h"

namespace quorvel {

std::string_view ConnectionLedger::originOf(std::string_view url) {
  const auto scheme = url.find("://");
  if (scheme == std::string_view::npos) return url;
  const auto end = platform::UrlEncoding::findDelimiter(url, scheme + 3);
  return url.substr(0, end);
}

ConnectionLedger::Counts* ConnectionLedger::find(std::string_view origin) {
  const auto it = origins_.find(origin);
  return it == origins_.end() ? nullptr : &it->second;
}

void ConnectionLedger::socketOpened(int socket, std::string_view origin) {
  // A number the system reuses before we heard of its close (a socket
  // libcurl closed without telling us) must not count twice.
  socketClosed(socket);
  socketOrigins_.emplace(socket, origin);
  ++origins_[std::string(origin)].sockets;
}

void ConnectionLedger::socketClosed(int socket) {
  const auto it = socketOrigins_.find(socket);
  if (it == socketOrigins_.end()) return;
  if (Counts* counts = find(it->second); counts != nullptr && counts->sockets > 0) {
    --counts->sockets;
  }
  forgetIfUnused(it->second);
  socketOrigins_.erase(it);
}

void ConnectionLedger::transferStarted(std::string_view origin) {
  ++origins_[std::string(origin)].transfers;
}

void ConnectionLedger::transferFinished(std::string_view origin) {
  if (Counts* counts = find(origin); counts != nullptr && counts->transfers > 0) {
    --counts->transfers;
  }
  forgetIfUnused(origin);
}

void ConnectionLedger::forgetIfUnused(std::string_view origin) {
  // An application that talks to many hosts over time keeps no entry for
  // the ones it no longer uses.
  const auto it = origins_.find(origin);
  if (it != origins_.end() && it->second.sockets == 0 && it->second.transfers == 0) {
    origins_.erase(it);
  }
}

std::size_t ConnectionLedger::transfers(std::string_view origin) const {
  const auto it = origins_.find(origin);
  return it == origins_.end() ? 0 : it->second.transfers;
}

bool ConnectionLedger::hasIdleConnection(std::string_view origin) const {
  const auto it = origins_.find(origin);
  return it != origins_.end() && it->second.sockets > it->second.transfers;
}

}  // namespace quorvel
