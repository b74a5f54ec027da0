#pragma once

#include <memory>
#include <string>

namespace quorvel {

class CoreServices;

// The account a Quorvel object was initialized with. It is also the
// `environment` of a ProviderService: through it a request reaches the
// transport, cache and identity of that Quorvel object, for as long as the
// object has not shut down.
class AccountDetails {
 public:
  AccountDetails(std::string appId, std::string quorvelUrl, std::string clientId,
                 std::weak_ptr<CoreServices> services = {})
      : appId_(std::move(appId)),
        quorvelUrl_(std::move(quorvelUrl)),
        clientId_(std::move(clientId)),
        services_(std::move(services)) {}

  const std::string& appId() const { return appId_; }
  // The service's base URL, without a trailing slash.
  const std::string& quorvelUrl() const { return quorvelUrl_; }
  const std::string& clientId() const { return clientId_; }
  std::shared_ptr<CoreServices> services() const { return services_.lock(); }

 private:
  std::string appId_;
  std::string quorvelUrl_;
  std::string clientId_;
  std::weak_ptr<CoreServices> services_;
};

}  // namespace quorvel
