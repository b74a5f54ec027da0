#pragma once

#include <functional>
#include <optional>

#include "quorvel/quorvel.h"
#include "quorvel/settings_provider.h"

namespace velmaro {

// What every settings provider does: ask the core library's settings provider
// for the document decoded as T and pass on what comes back, unchanged. Before
// the core library is initialized (or without a settings provider) the
// callback is never called. No caching, retry or fallback of our own.
template <quorvel::DecodableDefault T>
void fetchSettings(std::function<void(std::optional<T>)> callback) {
  auto core = quorvel::Quorvel::instance();
  if (!core) return;
  auto settings = core->providerModule().settings;
  if (!settings) return;
  settings->getSettings<T>(std::move(callback));
}

}  // namespace velmaro
