#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quorvel/anonymous_identity.h"
#include "tests/provider_fixture.h"
#include "velmaro/core/qvk_etag.h"
#include "velmaro/requests/qvk_request_provider.h"
#include "velmaro/storage/request_storage.h"
#include "velmaro/ticketforms/qvk_ticket_forms_provider_cacher.h"

namespace velmaro::testing {

// The request provider on the shared fixture; "QVKAPI_" notifications.
class RequestProviderTest : public ProviderFixture {
 protected:
  RequestProviderTest() : ProviderFixture("QVKAPI_") {}

  void resetState() override {
    QVKTicketFormsProviderCacher::resetForTesting();
    QVKETag::resetForTesting();
    emulator_->control("PUT", "settings", R"({"conversations":true,"ticket_forms":true})");
  }
  void startProviders() override { provider_ = std::make_unique<QVKRequestProvider>(core_); }
  void stopProviders() override { provider_.reset(); }

  using ProviderFixture::notificationNames;
  std::vector<std::string> notificationNames() const { return notificationNames(provider_.get()); }

  void useAnonymousIdentity() {
    core_->setIdentity(std::make_shared<quorvel::AnonymousIdentity>());
  }
  RequestStorage storage() const { return RequestStorage::initWithQuorvel(*core_); }

  // A new request through the provider; its id.
  std::string createRequest(const std::string& subject) {
    QVKCreateRequest request;
    request.subject = subject;
    request.requestDescription = "It does not print.";
    auto answers = call<QVKDispatcherResponse>(
        [&](auto cb) { provider_->createRequest(request, std::move(cb)); });
    settle();  // the success notification follows the answer
    notifications_.clear();
    if (answers->size() != 1 || !(*answers)[0].result) return "";
    const auto json = boost::json::parse((*answers)[0].result->data.value_or("{}"));
    const auto& id = json.at("request").at("id");
    return id.is_string() ? std::string(id.get_string()) : std::to_string(id.to_number<long>());
  }

  std::unique_ptr<QVKRequestProvider> provider_;
};

}  // namespace velmaro::testing
