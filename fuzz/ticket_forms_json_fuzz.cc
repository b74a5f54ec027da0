// Fuzz target: a show_many answer of arbitrary bytes through the ticket-form
// records, the join of fields to forms, the form cache and the field checks.
// Input that is not JSON, or not an object, is dropped as the provider drops
// it (the records are then built from nothing).
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <boost/json/parse.hpp>
#include <boost/json/value_from.hpp>

#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"
#include "velmaro/ticketforms/qvk_ticket_forms_provider_cacher.h"
#include "velmaro/ticketforms/raw_json.h"

using velmaro::QVKTicketField;
using velmaro::QVKTicketForm;
using velmaro::QVKTicketFormsProviderCacher;
using velmaro::QVKTicketFormUtilities;
using velmaro::RawJson;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  boost::system::error_code ec;
  const auto json =
      boost::json::parse(std::string_view(reinterpret_cast<const char*>(data), size), ec);
  if (ec || !json.is_object()) return 0;
  const auto& answer = json.get_object();

  auto forms =
      QVKTicketFormUtilities::parseArrayFromDictionary<QVKTicketForm>(answer, "ticket_forms");
  const auto fields =
      QVKTicketFormUtilities::parseArrayFromDictionary<QVKTicketField>(answer, "ticket_fields");
  QVKTicketFormUtilities::mergeTicketFields(fields, forms);

  // As the provider keeps them: shared, cached by id, asked for again.
  std::vector<QVKTicketFormsProviderCacher::TicketForm> shared;
  std::vector<std::int64_t> ids;
  for (auto& form : forms) {
    if (const auto id = RawJson::int64(form.formId)) ids.push_back(*id);
    shared.push_back(std::make_shared<const QVKTicketForm>(std::move(form)));
  }
  const auto cache = QVKTicketFormsProviderCacher::updateCache(nullptr, shared);
  const auto found = QVKTicketFormsProviderCacher::ticketFormsWithIds(ids, cache);
  if (!QVKTicketFormsProviderCacher::cache(cache, ids) || found.size() != ids.size()) {
    __builtin_trap();  // every form with an integer id was just cached
  }

  for (const auto& form : shared) (void)boost::json::value_from(*form);
  // A few fields' patterns against their own titles: patterns are compiled
  // once each, but a hostile one still costs its time limit.
  std::size_t checked = 0;
  for (const auto& field : fields) {
    if (checked++ == 4) break;
    (void)QVKTicketFormUtilities::checkString(RawJson::string(field.title).value_or(""), field);
  }
  return 0;
}
