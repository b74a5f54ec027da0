#include "velmaro/ticketforms/qvk_ticket_forms_provider_cacher.h"

#include <mutex>
#include <utility>

#include "velmaro/ticketforms/raw_json.h"

namespace velmaro {
namespace {

// The process's cache reference. Only the reference is guarded: the
// dictionary behind it is immutable, so readers use it without the lock.
struct Holder {
  std::mutex mutex;
  QVKTicketFormsProviderCacher::CachePtr cache;
};

Holder& holder() {
  static Holder instance;
  return instance;
}

}  // namespace

QVKTicketFormsProviderCacher::CachePtr QVKTicketFormsProviderCacher::cachedTicketForms() {
  auto& h = holder();
  std::lock_guard lock(h.mutex);
  return h.cache;
}

void QVKTicketFormsProviderCacher::setCachedTicketForms(CachePtr cache) {
  auto& h = holder();
  {
    std::lock_guard lock(h.mutex);
    std::swap(h.cache, cache);
  }
  // The old dictionary (perhaps the last reference to it) goes here, outside
  // the lock.
}

std::vector<QVKTicketFormsProviderCacher::TicketForm>
QVKTicketFormsProviderCacher::ticketFormsWithIds(const std::vector<std::int64_t>& ids,
                                                 const CachePtr& cache) {
  std::vector<TicketForm> forms;
  if (!cache) return forms;
  forms.reserve(ids.size());
  for (const auto id : ids) {
    const auto found = cache->find(id);
    if (found != cache->end()) forms.push_back(found->second);
  }
  return forms;
}

bool QVKTicketFormsProviderCacher::cache(const CachePtr& cache,
                                         const std::vector<std::int64_t>& ids) {
  return ticketFormsWithIds(ids, cache).size() == ids.size();
}

QVKTicketFormsProviderCacher::CachePtr QVKTicketFormsProviderCacher::updateCache(
    const CachePtr& cache, const std::vector<TicketForm>& forms) {
  auto updated = cache ? std::make_shared<Cache>(*cache) : std::make_shared<Cache>();
  for (const auto& form : forms) {
    if (!form) continue;
    if (const auto id = RawJson::int64(form->formId)) (*updated)[*id] = form;
  }
  return updated;
}

void QVKTicketFormsProviderCacher::resetForTesting() {
  setCachedTicketForms(nullptr);
}

}  // namespace velmaro
