#include "velmaro/requests/qvk_requests_response.h"

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

std::optional<std::vector<QVKRequest>> QVKRequestsResponse::parseRequestListWithDictionary(
    const boost::json::object& json) {
  if (J::array(json, "requests") == nullptr) return std::nullopt;
  return J::parseList(json, "requests", &QVKRequest::initWithDict);
}

std::optional<std::vector<QVKSupportUser>>
QVKRequestsResponse::parseRequestListAgentsWithDictionary(const boost::json::object& json) {
  if (J::array(json, "last_commenting_agents") == nullptr) return std::nullopt;
  auto agents = J::parseList(json, "last_commenting_agents", &QVKSupportUser::initWithDictionary);
  for (auto& agent : agents) agent.isAgent = true;
  return agents;
}

}  // namespace velmaro
