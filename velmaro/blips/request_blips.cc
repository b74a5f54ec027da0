#include "velmaro/blips/request_blips.h"

#include "quorvel/quorvel.h"
#include "velmaro/blips/blip_vocabulary.h"
#include "velmaro/blips/request_user_action.h"

namespace velmaro {
namespace {

void send(const char* action, const std::string& requestId) {
  quorvel::UserAction event(BlipVocabulary::version(), action, std::nullopt,
                            BlipVocabulary::kChannel, BlipVocabulary::kCategory,
                            boost::json::value(RequestUserAction{requestId}.encode()));
  auto core = quorvel::Quorvel::instance();
  if (!core || !core->providerModule().blip) return;
  core->providerModule().blip->send(event, quorvel::BlipsGroup::behavioural);
}

}  // namespace

void RequestBlips::requestCreatedBlip(const std::string& requestId) {
  send(BlipVocabulary::kRequestCreatedAction, requestId);
}

void RequestBlips::requestUpdateBlip(const std::string& requestId) {
  send(BlipVocabulary::kRequestUpdatedAction, requestId);
}

}  // namespace velmaro
