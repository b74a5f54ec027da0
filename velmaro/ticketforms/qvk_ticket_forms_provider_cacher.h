#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "velmaro/ticketforms/qvk_ticket_form.h"

namespace velmaro {

// Every ticket form fetched so far, for the life of the process, so that
// asking again for known forms costs no network call. The forms are the very
// objects handed to callers (shared, and const: a form that callers on several
// threads hold is never edited under them).
//
// The request provider's fetch: parse "ticket_forms" and "ticket_fields" with
// QVKTicketFormUtilities::parseArrayFromDictionary, mergeTicketFields, make
// each form a std::shared_ptr<const QVKTicketForm>, then
// setCachedTicketForms(updateCache(cachedTicketForms(), forms)) and answer
// the same forms.
class QVKTicketFormsProviderCacher {
 public:
  using TicketForm = std::shared_ptr<const QVKTicketForm>;
  // Forms by id. Ids are compared by numeric value: a form whose "id" is 7.0
  // is the form 7.
  using Cache = std::map<std::int64_t, TicketForm>;
  // The cache is replaced as a whole and never edited: a holder of one keeps a
  // complete, unchanging dictionary. Null: no cache (nothing fetched yet).
  using CachePtr = std::shared_ptr<const Cache>;

  // The process's cache, or null before the first fetch.
  static CachePtr cachedTicketForms();
  // Replaces it atomically: a reader sees the old dictionary or the new one,
  // never a mix. Two fetches that finish together both replace it, and the
  // later one wins.
  static void setCachedTicketForms(CachePtr cache);

  // The cached form of every id that has one, in the order of the ids (ids
  // without a cached form are skipped).
  static std::vector<TicketForm> ticketFormsWithIds(const std::vector<std::int64_t>& ids,
                                                    const CachePtr& cache);
  // cache:containsAllTicketForms: whether ticketFormsWithIds finds as many
  // forms as there are ids, that is, whether every id has a cached form. A
  // null cache holds no form; an empty id list is contained in any cache
  // (the provider refuses empty lists before asking).
  static bool cache(const CachePtr& cache, const std::vector<std::int64_t>& ids);
  // A new dictionary: the old one's forms (null counts as empty), then every
  // new form under its formId, replacing an older form with the same id. A
  // form whose formId is not a number with an exact 64-bit value (missing,
  // null, text, a fraction) cannot be asked for by id and is not stored.
  static CachePtr updateCache(const CachePtr& cache, const std::vector<TicketForm>& forms);

  // No cache, as at the start of a process (tests).
  static void resetForTesting();
};

}  // namespace velmaro
