#pragma once

#include <map>
#include <string>

namespace quorvel {

// Who is calling: the core turns these into the User-Agent and X-QV-Client
// headers, then adds `additionalHeaders` as given.
class ClientHeaders {
 public:
  ClientHeaders() = default;
  ClientHeaders(const ClientHeaders&) = default;
  ClientHeaders& operator=(const ClientHeaders&) = default;
  virtual ~ClientHeaders() = default;

  virtual std::string client() const = 0;
  virtual std::string version() const = 0;
  virtual std::map<std::string, std::string> additionalHeaders() const = 0;
};

}  // namespace quorvel
