#include "velmaro/requests/ticket_form_operations.h"

#include "velmaro/core/answer_parsing.h"
#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"
#include "velmaro/util/qvk_classic_logger.h"
#include "velmaro/util/qvk_validator.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

namespace {

constexpr const char* kOperation = "-[QVKRequestProvider getTicketFormWithIds:callback:]";

std::string joined(const std::vector<std::int64_t>& ids) {
  std::string text;
  for (const auto id : ids) text += (text.empty() ? "" : ",") + std::to_string(id);
  return text;
}

TicketFormOperations::Forms formsOf(const boost::json::object& json) {
  using Utilities = QVKTicketFormUtilities;
  auto forms = Utilities::parseArrayFromDictionary<QVKTicketForm>(json, "ticket_forms");
  Utilities::mergeTicketFields(
      Utilities::parseArrayFromDictionary<QVKTicketField>(json, "ticket_fields"), forms);
  TicketFormOperations::Forms shared;
  shared.reserve(forms.size());
  for (auto& form : forms) shared.push_back(std::make_shared<const QVKTicketForm>(std::move(form)));
  using Cacher = QVKTicketFormsProviderCacher;
  Cacher::setCachedTicketForms(Cacher::updateCache(Cacher::cachedTicketForms(), shared));
  return shared;
}

}  // namespace

void TicketFormOperations::getTicketFormWithIds(const Context& ctx,
                                                const std::vector<std::int64_t>& ids,
                                                ProviderCallback<Forms> cb) {
  if (ctx.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb), kOperation, cb, "callback")) {
    return;
  }
  if (ids.empty()) {
    auto error = QVKRequestProviderErrors::ticketFormsEmptyListError();
    QVKClassicLogger::e(
        "%s failed parameter validation with parameters: \n%@\nCancelling call with error: %@",
        kOperation, ids, error);
    ctx.answerOnMainThread<Forms>("callback", std::move(cb), std::nullopt, std::move(error));
    return;
  }
  const auto limited =
      QVKTicketFormUtilities::limitTicketFormIds(ids, QVKTicketFormUtilities::kMaxTicketFormIds);
  const auto cache = QVKTicketFormsProviderCacher::cachedTicketForms();
  if (QVKTicketFormsProviderCacher::cache(cache, limited)) {
    if (cb) cb(QVKTicketFormsProviderCacher::ticketFormsWithIds(limited, cache), std::nullopt);
    return;
  }
  ProviderRequest<Forms> request;
  request.path = StringFormat::format(
      "/api/v2/ticket_forms/show_many.json?ids=%@&include=ticket_fields&active=true",
      joined(limited));
  // Malformed JSON is not reported: the forms come out of an empty answer.
  request.parse = AnswerParsing::json<Forms>(&formsOf);
  Context::ticketFormsAvailable([ctx, request = std::move(request), cb](bool open) mutable {
    if (!open) {
      ctx.refuse(request, std::move(cb), QVKRequestProviderErrors::ticketFormsNotAvailableError());
      return;
    }
    ctx.send(std::move(request), std::move(cb));
  });
}

}  // namespace velmaro
