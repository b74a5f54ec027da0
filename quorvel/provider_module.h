#pragma once

#include <memory>

#include "quorvel/blips_provider.h"
#include "quorvel/settings_provider.h"

namespace quorvel {

// The providers of a Quorvel object.
struct ProviderModule {
  std::shared_ptr<SettingsProvider> settings;
  std::shared_ptr<BlipsProvider> blip;
};

}  // namespace quorvel
